#include "primitives/winner.h"

namespace qve {
namespace {

const register_winner<true> registered(L"greatest");

}  // namespace

void define_greatest() {}

}  // namespace qve
