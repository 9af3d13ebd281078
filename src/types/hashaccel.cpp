#include "types/hashaccel.h"

#include <string>

#include "types/collation.h"
#include "types/hashfunc.h"
#include "types/usrheap.h"
#include "types/usrtype.h"

namespace qve {

hashaccel::hashaccel(const usrtype* type, size_t expected)
    : m_type(type),
      m_exact(!type->collation() || type->collation()->name() == collation::collationBinary),
      m_table(expected) {}

unsigned hashaccel::key(std::string_view bytes) const {
    if (m_exact) return hashfunc(bytes.data(), bytes.size());
    return m_type->hash(usratom(m_type, bytes.data(), bytes.size(), true));
}

void hashaccel::build(const usrheap& heap) {
    const unsigned long long end = heap.next();
    for (unsigned long long token = heap.first(); token < end; token = heap.after(token)) {
        // A copy, since checking for equal entries reads others and may move the window.
        const std::string bytes(heap.bytes(token));
        const unsigned hash = key(bytes);
        if (m_distinct && m_exact) m_distinct = find_bytes(heap, bytes, hash) == absent;
        insert_bytes(heap, bytes, hash, token);
    }
}

unsigned long long hashaccel::find(const usrheap& heap, const usratom& atom) const {
    if (!atom.data()) return absent;
    const unsigned hash = key(atom.bytes());
    const unsigned long long same = find_bytes(heap, atom.bytes(), hash);
    return same != absent || m_exact ? same : find_equal(heap, atom.bytes(), hash);
}

unsigned long long hashaccel::find_bytes(const usrheap& heap, std::string_view bytes, unsigned key) const {
    unsigned long long token = absent;
    m_table.find_if(key, [&](unsigned long long candidate) {
        if (heap.bytes(candidate) != bytes) return false;
        token = candidate;
        return true;
    });
    return token;
}

unsigned long long hashaccel::find_equal(const usrheap& heap, std::string_view bytes, unsigned key) const {
    const usratom atom(m_type, bytes.data(), bytes.size(), true);
    unsigned long long token = absent;
    m_table.find_if(key, [&](unsigned long long candidate) {
        const std::string_view other = heap.bytes(candidate);
        if (m_type->compare(atom, usratom(m_type, other.data(), other.size(), true)) != 0) return false;
        token = candidate;
        return true;
    });
    return token;
}

void hashaccel::insert(const usrheap& heap, const usratom& atom, unsigned long long token) {
    insert_bytes(heap, atom.bytes(), key(atom.bytes()), token);
}

void hashaccel::insert_bytes(const usrheap& heap, std::string_view bytes, unsigned key, unsigned long long token) {
    // A writer puts no bytes twice, but perhaps bytes that the collation calls equal to others.
    if (m_distinct && !m_exact) m_distinct = find_equal(heap, bytes, key) == absent;
    m_table.insert(key, token);
    ++m_cardinality;
    m_last = token;
}

}  // namespace qve
