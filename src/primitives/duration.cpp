#include "primitives/cast_kernel.h"

namespace qve {
namespace {

const register_cast<duration> registered;

}  // namespace

void define_duration() {}

}  // namespace qve
