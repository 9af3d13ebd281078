#include "storage/verify_column.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "storage/Column.h"
#include "types/usrheap.h"

namespace qve {
namespace {

constexpr uint64_t rows_at_once = 1 << 16;

/// Which tokens have an entry. Bounded by the length of the dictionary.
class Entries {
public:
    /// Walks over the entries of a heap; gives what is wrong with them.
    std::wstring Read(const usrheap& heap) {
        const unsigned long long end = heap.next();
        m_known.assign(end, false);
        unsigned long long token = heap.first();
        while (token < end) {
            if (!heap.bytes(token).data()) return L"an entry of its dictionary is cut off";
            m_known[token] = true;
            const unsigned long long after = heap.after(token);
            if (after <= token) return L"its dictionary does not end";
            token = after;
        }
        return token > end && end > 0 ? L"the last entry of its dictionary is cut off" : L"";
    }
    /// Token 0 is the null that every heap begins with.
    bool Has(unsigned long long token) const { return token == 0 || (token < m_known.size() && m_known[token]); }

private:
    std::vector<bool> m_known;
};

template <class Token>
bool AllKnown(const void* cells, uint64_t count, const Entries& entries) {
    for (uint64_t row = 0; row < count; ++row) {
        Token token;
        std::memcpy(&token, static_cast<const char*>(cells) + row * sizeof token, sizeof token);
        if (token != static_cast<Token>(~Token{0}) && !entries.Has(token)) return false;
    }
    return true;
}

bool AllKnown(const void* cells, unsigned width, uint64_t count, const Entries& entries) {
    switch (width) {
        case 1:
            return AllKnown<uint8_t>(cells, count, entries);
        case 2:
            return AllKnown<uint16_t>(cells, count, entries);
        case 4:
            return AllKnown<uint32_t>(cells, count, entries);
        case 8:
            return AllKnown<uint64_t>(cells, count, entries);
        default:
            return false;
    }
}

}  // namespace

std::wstring VerifyColumn(Column& column, const std::function<void()>& pause) {
    const unsigned width = column.GetTokenSize();
    if (column.GetData()->GetSize() % width != 0) return L"its length is no whole number of cells";
    Entries entries;
    if (column.IsCompressed()) {
        if (!column.GetHeap()) return L"it has no dictionary";
        std::wstring fault = entries.Read(*column.GetHeap());
        if (!fault.empty()) return fault;
    }
    const uint64_t rows = column.GetCount();
    for (uint64_t row = 0; row < rows;) {
        pause();
        const uint64_t count =
            std::min({column.Seek(row, std::min(rows_at_once, rows - row)), rows_at_once, rows - row});
        if (count == 0) return L"it ends at row " + std::to_wstring(row) + L" of " + std::to_wstring(rows);
        const void* const cells = column.GetInput().data;  // decodes them
        column.Load(row, count);
        if (column.IsCompressed() && !AllKnown(cells, width, count, entries)) {
            return L"a row from " + std::to_wstring(row) + L" on has no entry in its dictionary";
        }
        row += count;
    }
    return {};
}

}  // namespace qve
