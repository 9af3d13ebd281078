#include "algebra/KeyRanks.h"

namespace qve {

KeyRanks::KeyRanks(const unsigned* entries, uint64_t slots) {
    std::vector<Block> blocks((slots >> 5) + 1);
    uint32_t rows = 0;
    for (uint64_t slot = 0; slot < slots; ++slot) {
        Block& block = blocks[slot >> 5];
        if ((slot & 31) == 0) block.before = rows;
        if (entries[slot] == 0) continue;
        if (entries[slot] != ++rows) return;
        block.keys |= uint32_t{1} << (slot & 31);
    }
    m_blocks = std::move(blocks);
}

}  // namespace qve
