#include "primitives/text_cast.h"

namespace qve {
namespace {

const register_text_cast<usr2> registered;

}  // namespace

void define_usr2() {}

}  // namespace qve
