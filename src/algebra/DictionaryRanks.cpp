#include "algebra/DictionaryRanks.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "algebra/OperatorProgressCallback.h"
#include "types/collation.h"
#include "types/usratom.h"
#include "types/usrheap.h"
#include "types/usrtype.h"

namespace qve {

namespace {

constexpr unsigned checkInterval = 1u << 14;

// A value as bytes that memcmp orders: the first eight as a number, and where all of them are.
struct OrderedBytes {
    uint64_t prefix;
    size_t offset;
    uint32_t length;
    unsigned ordinal;
};

// A thread's own copy of a collation, which may be none.
class WorkingCollation {
public:
    explicit WorkingCollation(const collation* shared)
        : m_shared(shared), m_own(shared ? shared->allocate() : nullptr) {}
    ~WorkingCollation() {
        if (m_shared) m_shared->release(m_own);
    }
    WorkingCollation(const WorkingCollation&) = delete;
    WorkingCollation& operator=(const WorkingCollation&) = delete;
    const collation* get() const { return m_own; }

private:
    const collation* const m_shared;
    const collation* const m_own;
};

uint64_t Prefix(const char* bytes, size_t length) {
    unsigned char first[8] = {};
    std::copy_n(bytes, std::min<size_t>(length, sizeof(first)), first);
    uint64_t prefix = 0;
    for (const unsigned char byte : first) prefix = prefix << 8 | byte;
    return prefix;
}

int Compare(const std::vector<char>& arena, const OrderedBytes& a, const OrderedBytes& b) {
    if (a.prefix != b.prefix) return a.prefix < b.prefix ? -1 : 1;
    const uint32_t common = std::min(a.length, b.length);
    const int order = common ? std::memcmp(arena.data() + a.offset, arena.data() + b.offset, common) : 0;
    if (order != 0) return order;
    return a.length == b.length ? 0 : (a.length < b.length ? -1 : 1);
}

}  // namespace

DictionaryRanks::DictionaryRanks(const usrheap& heap, std::span<const uint64_t> tokens,
                                 const ProgressCallback* progress) {
    const uint64_t end = heap.next();
    m_present.resize(end / 64 + 1);
    for (const uint64_t token : tokens) {
        if (token < end) m_present[token >> 6] |= uint64_t{1} << (token & 63);
    }
    OperatorProgressCallback::Check(progress);

    const usrtype* type = heap.type();
    const WorkingCollation order(type->collation());
    std::vector<char> arena;
    std::vector<OrderedBytes> values;
    std::vector<unsigned char> key;
    usratom atom;
    unsigned ordinal = 0;
    for (size_t word = 0; word < m_present.size(); ++word) {
        m_before.push_back(ordinal);
        for (uint64_t bits = m_present[word]; bits; bits &= bits - 1) {
            heap.get(word * 64 + static_cast<unsigned>(std::countr_zero(bits)), atom);
            if (atom.isnull()) {
                ++ordinal;
                continue;
            }
            std::string_view bytes = atom.bytes();
            if (order.get()) {
                key.clear();
                order.get()->sortkey(key, atom);
                bytes = {reinterpret_cast<const char*>(key.data()), key.size()};
            }
            values.push_back(
                {Prefix(bytes.data(), bytes.size()), arena.size(), static_cast<uint32_t>(bytes.size()), ordinal++});
            arena.insert(arena.end(), bytes.begin(), bytes.end());
            if (ordinal % checkInterval == 0) OperatorProgressCallback::Check(progress);
        }
    }

    uint64_t compared = 0;
    std::sort(values.begin(), values.end(), [&](const OrderedBytes& a, const OrderedBytes& b) {
        if (++compared % checkInterval == 0) OperatorProgressCallback::Check(progress);
        return Compare(arena, a, b) < 0;
    });
    m_ranks.resize(ordinal);
    unsigned rank = 0;
    for (size_t i = 0; i < values.size(); ++i) {
        if (i == 0 || Compare(arena, values[i - 1], values[i]) != 0) ++rank;
        m_ranks[values[i].ordinal] = rank;
    }
}

}  // namespace qve
