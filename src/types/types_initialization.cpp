#include "types/types_initialization.h"

#include "types/builtin.h"
#include "types/collation.h"
#include "types/varchar.h"

namespace qve {

void types_initialization() {
    usrtype::register_types();
    builtin::register_types();
    varchar::register_types();
    define_collations();
}

}  // namespace qve
