#include "primitives/cast_kernel.h"

namespace qve {
namespace {

const register_cast<date> registered;

}  // namespace

void define_date() {}

}  // namespace qve
