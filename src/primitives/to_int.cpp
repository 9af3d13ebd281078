#include "primitives/cast_kernel.h"

namespace qve {
namespace {

const register_cast<bigint> registered(L"to_int");

}  // namespace

void define_to_int() {}

}  // namespace qve
