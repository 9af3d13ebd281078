#include "primitives/cast_kernel.h"

namespace qve {
namespace {

const register_cast<datetime> registered;

}  // namespace

void define_datetime() {}

}  // namespace qve
