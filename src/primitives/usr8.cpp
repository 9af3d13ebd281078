#include "primitives/text_cast.h"

namespace qve {
namespace {

const register_text_cast<usr8> registered;

}  // namespace

void define_usr8() {}

}  // namespace qve
