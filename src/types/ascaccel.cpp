#include "types/ascaccel.h"

#include "system/QuillonException.h"
#include "types/status.h"
#include "types/usrheap.h"
#include "types/usrtype.h"

namespace qve {

void ascaccel::build(const usrheap& heap) {
    m_count = 0;
    m_last = absent;
    usratom atom(m_type);
    const unsigned long long end = heap.next();
    for (unsigned long long token = heap.first(); token < end; token = heap.after(token)) {
        heap.get(token, atom);
        insert(heap, atom, token);
    }
}

unsigned long long ascaccel::find(const usrheap&, const usratom& atom) const {
    return m_count && m_type->compare(m_lastAtom, atom) == 0 ? m_last : absent;
}

void ascaccel::admit(const usratom& atom) const {
    if (m_count && m_type->compare(m_lastAtom, atom) >= 0) {
        throw QVE_InvalidArgument(status::ascaccel_insert, "ascaccel::insert: Value does not ascend");
    }
}

void ascaccel::insert(const usrheap&, const usratom& atom, unsigned long long token) {
    admit(atom);
    m_lastAtom.assign(m_type, atom.data(), atom.length());
    m_last = token;
    ++m_count;
}

}  // namespace qve
