#include "primitives/text_cast.h"

namespace qve {
namespace {

const register_text_cast<usr4> registered;

}  // namespace

void define_usr4() {}

}  // namespace qve
