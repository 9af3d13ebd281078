#pragma once

#ifdef __cplusplus
extern "C" {
#endif

/* Connects to `descriptor`, runs `query`, adds up the values of its integer result. Gives the first status that is not
 * 0. */
int run_c_program(const char* descriptor, const char* query, long long* sum);

#ifdef __cplusplus
}
#endif
