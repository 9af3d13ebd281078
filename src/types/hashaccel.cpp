#include "types/hashaccel.h"

#include <array>
#include <random>
#include <string>

#include "types/bytes_hash.h"
#include "types/collation.h"
#include "types/heap_reader.h"
#include "types/usrheap.h"
#include "types/usrtype.h"

namespace qve {

namespace {

// How many entries are read together, so that their cache misses overlap.
constexpr unsigned batch = 32;

// No text can be made whose values all collide.
uint64_t process_seed() {
    static const uint64_t seed = [] {
        std::random_device device;
        return uint64_t{device()} << 32 | device();
    }();
    return seed;
}

}  // namespace

hashaccel::hashaccel(const usrtype* type, size_t expected)
    : m_type(type),
      m_exact(!type->collation() || type->collation()->name() == collation::collationBinary),
      m_table(expected) {}

unsigned hashaccel::key(std::string_view bytes) const {
    if (m_exact) return bytes_hash(bytes.data(), bytes.size(), process_seed());
    return m_type->hash(usratom(m_type, bytes.data(), bytes.size(), true));
}

void hashaccel::build(const usrheap& heap) {
    const unsigned long long end = heap.next();
    const heap_reader reader(&heap);
    std::array<unsigned long long, batch> tokens;
    std::array<unsigned, batch> keys;
    for (unsigned long long token = heap.first(); token < end;) {
        unsigned count = 0;
        for (; count < batch && token < end; ++count) {
            const std::string_view bytes = reader[token];
            tokens[count] = token;
            keys[count] = key(bytes);
            m_table.prefetch(keys[count]);
            token = heap.prefix_width() ? token + heap.prefix_width() + bytes.size() : token + 1;
        }
        for (unsigned i = 0; i < count; ++i) {
            if (m_distinct && first_candidate(keys[i]) != absent) {
                // A copy, since checking for equal entries reads others and may move the window.
                const std::string bytes(reader[tokens[i]]);
                m_distinct = (m_exact ? find_bytes(heap, bytes, keys[i]) : find_equal(heap, bytes, keys[i])) == absent;
            }
            add(keys[i], tokens[i]);
        }
    }
}

unsigned long long hashaccel::find(const usrheap& heap, const usratom& atom) const {
    if (!atom.data()) return absent;
    const unsigned hash = key(atom.bytes());
    const unsigned long long same = find_bytes(heap, atom.bytes(), hash);
    return same != absent || m_exact ? same : find_equal(heap, atom.bytes(), hash);
}

unsigned long long hashaccel::find_bytes(const usrheap& heap, std::string_view bytes, unsigned key) const {
    return m_table.find_if(key, [&](unsigned long long candidate) { return heap.bytes(candidate) == bytes; });
}

unsigned long long hashaccel::find_equal(const usrheap& heap, std::string_view bytes, unsigned key) const {
    const usratom atom(m_type, bytes.data(), bytes.size(), true);
    return m_table.find_if(key, [&](unsigned long long candidate) {
        const std::string_view other = heap.bytes(candidate);
        return m_type->compare(atom, usratom(m_type, other.data(), other.size(), true)) == 0;
    });
}

void hashaccel::insert(const usrheap& heap, const usratom& atom, unsigned long long token) {
    insert_bytes(heap, atom.bytes(), key(atom.bytes()), token);
}

void hashaccel::insert_bytes(const usrheap& heap, std::string_view bytes, unsigned key, unsigned long long token) {
    // A writer puts no bytes twice, but perhaps bytes that the collation calls equal to others.
    if (m_distinct && !m_exact) m_distinct = find_equal(heap, bytes, key) == absent;
    add(key, token);
}

void hashaccel::add(unsigned key, unsigned long long token) {
    m_table.insert(key, token);
    ++m_cardinality;
    m_last = token;
}

}  // namespace qve
