#include "primitives/winner.h"

namespace qve {
namespace {

const register_winner<false> registered(L"least");

}  // namespace

void define_least() {}

}  // namespace qve
