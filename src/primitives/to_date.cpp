#include "primitives/cast_kernel.h"

namespace qve {
namespace {

const register_cast<date> registered(L"to_date");

}  // namespace

void define_to_date() {}

}  // namespace qve
