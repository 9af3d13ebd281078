#include "server/qve_initialization.h"

#include "primitives/define_primitives.h"
#include "types/types_initialization.h"
#include "vql/VQLFunction.h"

namespace qve {

void qve_initialization() {
    types_initialization();
    define_primitives();
    VQLFunction::Table();
}

}  // namespace qve
