#include "primitives/token_copier.h"

#include "types/usrtype.h"

namespace qve {

// Two heaps over one stream are one dictionary. A column without a heap holds plain numbers, whatever the other has.
token_copier::token_copier(const usrheap* from, usrheap* to)
    : m_from(from),
      m_to(to),
      m_same(from == to || !from || !to || from->stream() == to->stream()),
      m_reader(m_same ? nullptr : from) {}

unsigned long long token_copier::carried(unsigned long long token) {
    entry& found = m_entries[token % m_entries.size()];
    if (found.from == token) return found.to;
    const std::string_view bytes = m_reader[token];
    found.from = token;
    if (!bytes.data()) return found.to = usrheap::null_token;
    m_atom.assign(m_from->type(), bytes.data(), bytes.size(), true);
    return found.to = m_to->put(m_atom);
}

}  // namespace qve
