// Part of the tests under the thread sanitizer. The library of oneTBB is not instrumented, so the sanitizer cannot see
// how it orders tasks, and would call each a race: here they run on the thread that waits for them.

#include <tbb/global_control.h>

namespace {

const tbb::global_control s_oneThread(tbb::global_control::max_allowed_parallelism, 1);

}  // namespace
