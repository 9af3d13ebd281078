#include "storage/ReadOnlyTableSpace.h"

#include "storage/status.h"
#include "system/QuillonException.h"

namespace qve {

void ReadOnlyTableSpace::NotWritable() {
    throw QVE_RuntimeError(status::ReadOnlyTableSpace_NotWritable, "package not writable");
}

}  // namespace qve
