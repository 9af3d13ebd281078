#include "primitives/cast_kernel.h"

namespace qve {
namespace {

const register_index_cast<uchr> registered;

}  // namespace

void define_uchr() {}

}  // namespace qve
