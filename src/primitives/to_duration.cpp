#include "primitives/cast_kernel.h"

namespace qve {
namespace {

const register_cast<duration> registered(L"to_duration");

}  // namespace

void define_to_duration() {}

}  // namespace qve
