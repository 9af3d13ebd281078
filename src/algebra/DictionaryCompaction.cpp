#include "algebra/DictionaryCompaction.h"

#include <algorithm>
#include <bit>
#include <string>
#include <type_traits>

#include "algebra/OperatorProgressCallback.h"
#include "storage/Column.h"
#include "storage/integer_width.h"
#include "storage/stream/TempFileDataStream.h"
#include "types/heap_reader.h"

namespace qve {

namespace {

constexpr uint64_t wordBits = 64;
// Entries between two looks at the progress.
constexpr uint64_t polledEntries = uint64_t{1} << 16;
// Bytes of entries that wait for one write.
constexpr size_t mostWaiting = size_t{1} << 20;

// A dictionary that is looked up at random is mapped whole.
void ShowWhole(DataStream& stream) {
    if (stream.IsResident()) return;
    const uint64_t size = stream.GetSize();
    if (stream.GetPageLimit() < size) stream.SetPageLimit(std::bit_ceil(size));
}

}  // namespace

DictionaryCompaction::DictionaryCompaction(Column& column, RefCntPtr<ProgressCallback> progress)
    : m_column(column),
      m_progress(std::move(progress)),
      m_size(column.GetDict()->GetSize()),
      m_used(m_size / wordBits + 1),
      m_before(m_used.size()) {
    const uint64_t rows = column.GetCount();
    for (uint64_t row = 0; row < rows;) {
        OperatorProgressCallback::Check(m_progress.get());
        constexpr uint64_t window = 65536;
        const auto count = static_cast<unsigned>(std::min({column.Seek(row, 1), rows - row, window}));
        const input_column page = column.GetInput();
        with_width(static_cast<unsigned>(page.width),
                   [&](auto zero) { Mark(count, page.values<std::make_unsigned_t<decltype(zero)>>()); });
        row += count;
    }
    ShowWhole(*column.GetDict());
    const heap_reader reader(column.GetHeap());
    const unsigned prefix = column.GetHeap()->prefix_width();
    for (size_t word = 0; word < m_used.size(); ++word) {
        m_before[word] = m_cardinality;
        m_cardinality += static_cast<uint64_t>(std::popcount(m_used[word]));
    }
    VisitUsed([&](uint64_t token) { m_bytes += prefix + reader[token].size(); });
}

// Both null tokens are in no dictionary: all ones lies beyond its end, and the entry of 0 is there in any case.
template <class Token>
void DictionaryCompaction::Mark(unsigned count, const Token* tokens) {
    for (unsigned i = 0; i < count; ++i) {
        const uint64_t token = tokens[i];
        if (token > 0 && token < m_size) m_used[token / wordBits] |= uint64_t{1} << token % wordBits;
    }
}

template <class Visit>
void DictionaryCompaction::VisitUsed(Visit visit) const {
    uint64_t visited = 0;
    for (size_t word = 0; word < m_used.size(); ++word) {
        for (uint64_t bits = m_used[word]; bits != 0; bits &= bits - 1) {
            if (visited++ % polledEntries == 0) OperatorProgressCallback::Check(m_progress.get());
            visit(word * wordBits + static_cast<uint64_t>(std::countr_zero(bits)));
        }
    }
}

bool DictionaryCompaction::Pays() const {
    return m_bytes < m_size / 4 * 3;
}

RefCntPtr<DataStream> DictionaryCompaction::MakeDictionary() {
    auto dictionary = MakeRef<TempFileDataStream>();
    const std::unique_ptr<usrheap> heap = m_column.GetType()->heap(dictionary.get());  // writes the null
    const heap_reader reader(m_column.GetHeap());
    const unsigned prefix = heap->prefix_width();
    std::string entries;
    uint64_t next = heap->next();
    m_tokens.reserve(m_cardinality);
    VisitUsed([&](uint64_t token) {
        const std::string_view value = reader[token];
        const uint64_t length = value.size();
        entries.append(reinterpret_cast<const char*>(&length), prefix);
        entries.append(value);
        m_tokens.push_back(next);
        next += prefix + length;
        if (entries.size() < mostWaiting) return;
        dictionary->Append(entries.data(), entries.size());
        entries.clear();
    });
    dictionary->Append(entries.data(), entries.size());
    return dictionary;
}

template <class Token>
void DictionaryCompaction::Replace(unsigned count, Token* tokens) const {
    for (unsigned i = 0; i < count; ++i) {
        const uint64_t token = tokens[i];
        if (!IsUsed(token)) continue;
        const uint64_t below = m_used[token / wordBits] & ((uint64_t{1} << token % wordBits) - 1);
        const uint64_t number = m_before[token / wordBits] + static_cast<uint64_t>(std::popcount(below));
        tokens[i] = static_cast<Token>(m_tokens[number]);
    }
}

void DictionaryCompaction::Translate(unsigned count, unsigned width, void* tokens) const {
    with_width(width, [&](auto zero) { Replace(count, static_cast<std::make_unsigned_t<decltype(zero)>*>(tokens)); });
}

}  // namespace qve
