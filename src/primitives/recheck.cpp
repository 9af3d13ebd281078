#include "primitives/key_check.h"

namespace qve {
namespace {

const register_check<true> registered(L"recheck");

}  // namespace

void define_recheck() {}

}  // namespace qve
