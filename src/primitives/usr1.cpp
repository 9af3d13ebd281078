#include "primitives/text_cast.h"

namespace qve {
namespace {

const register_text_cast<usr1> registered;

}  // namespace

void define_usr1() {}

}  // namespace qve
