#include "primitives/register_order.h"

namespace qve {
namespace {

const register_order<sort_sense::ascending> registered(L"asc");

}  // namespace

void define_asc() {}

}  // namespace qve
