#include "primitives/vector_level.h"

#include "system/CPU.h"

namespace qve {

vector_level supported_vector_level() {
    constexpr unsigned ecx = 2;
    constexpr unsigned sse41 = 0x80000;
    if (!CPU::CheckInfo(ecx, sse41)) return vector_level::scalar;
    // Asks also whether the operating system keeps the wide registers, which the feature bit alone does not say.
    if (!__builtin_cpu_supports("avx2")) return vector_level::sse41;
    const bool widest = __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512dq") &&
                        __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512vl");
    return widest ? vector_level::avx512 : vector_level::avx2;
}

vector_level detail::s_vector_level = supported_vector_level();

}  // namespace qve
