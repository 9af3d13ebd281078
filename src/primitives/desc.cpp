#include "primitives/register_order.h"

namespace qve {
namespace {

const register_order<sort_sense::descending> registered(L"desc");

}  // namespace

void define_desc() {}

}  // namespace qve
