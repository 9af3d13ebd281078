#include "primitives/text_sort_keys.h"

#include "types/usrtype.h"

namespace qve {
namespace {

constexpr char null_mark = 0;
constexpr char value_mark = 1;

}  // namespace

text_sort_keys::text_sort_keys(const usrheap* heap) : m_heap(heap), m_values(heap) {
    if (!heap) return;
    const usrtype* type = heap->type();
    // UTF-8 and plain bytes are in order as they are; everything else needs the key of its collation.
    const bool plain =
        !type->collation() || (type->scale() == 1 && type->collation()->name() == collation::collationBinary);
    if (!plain) m_collation.emplace(type->collation());
}

std::string text_sort_keys::of(unsigned long long token) {
    if (token == usrheap::null_token) return std::string(1, null_mark);
    std::string key(1, value_mark);
    if (!m_heap) {
        for (int shift = 56; shift >= 0; shift -= 8) key += static_cast<char>(token >> shift);
        return key;
    }
    const std::string_view bytes = m_values[token];
    if (!bytes.data()) return std::string(1, null_mark);
    if (!m_collation) return key += bytes;
    m_atom.assign(m_heap->type(), bytes.data(), bytes.size(), true);
    m_key.clear();
    (*m_collation)->sortkey(m_key, m_atom);
    return key.append(m_key.begin(), m_key.end());
}

}  // namespace qve
