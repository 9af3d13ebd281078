#include "primitives/key_check.h"

namespace qve {
namespace {

const register_check<false> registered(L"check");

}  // namespace

void define_check() {}

}  // namespace qve
