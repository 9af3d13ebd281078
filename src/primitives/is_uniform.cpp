#include "primitives/is_uniform.h"

#include <cstring>

namespace qve {

// Where all cells are the same, each byte is that of the cell before.
bool is_uniform(uint64_t count, const void* cells, unsigned width) {
    if (count < 2) return true;
    const char* bytes = static_cast<const char*>(cells);
    return std::memcmp(bytes, bytes + width, (count - 1) * width) == 0;
}

}  // namespace qve
