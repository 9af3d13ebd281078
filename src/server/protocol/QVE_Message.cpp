#include "server/protocol/QVE_Message.h"

#include <algorithm>

namespace qve {

void QVE_Message::resize(std::size_t size) {
    const std::size_t old = m_size;
    if (size > m_bytes.size()) Grow(size);
    // What lies beyond the old size may be left over from a longer message.
    if (size > old) std::fill(m_bytes.begin() + old, m_bytes.begin() + size, std::uint8_t{0});
    m_size = size;
}

void QVE_Message::Grow(std::size_t needed) {
    // Within the capacity only the exact size: whoever reserved knows what is coming.
    m_bytes.resize(needed > m_bytes.capacity() ? 2 * needed : needed);
}

}  // namespace qve
