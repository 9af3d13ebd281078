#include "primitives/cast_kernel.h"

namespace qve {
namespace {

const register_cast<datetime> registered(L"to_datetime");

}  // namespace

void define_to_datetime() {}

}  // namespace qve
