#include "algebra/SortKeys.h"

#include <algorithm>
#include <bit>

#include "algebra/DictionaryRanks.h"
#include "algebra/OperatorProgressCallback.h"
#include "algebra/Table.h"
#include "algebra/sort_word.h"
#include "algebra/status.h"
#include "storage/Column.h"
#include "system/QuillonException.h"
#include "system/unicode.h"

namespace qve {

namespace {

// Rows that are read, and worked on between two looks at the cancelled flag.
constexpr uint64_t blockRows = 1u << 16;

}  // namespace

SortKeys::SortKeys(const Table& table, const std::vector<Namespace::SortSpec>& specs, const ProgressCallback* progress)
    : m_table(table), m_specs(specs), m_progress(progress) {}
SortKeys::~SortKeys() = default;

bool SortKeys::HasChunk(unsigned chunk) {
    return Load(uint64_t{chunk} * chunkBits + 1);
}

bool SortKeys::Load(uint64_t bits) {
    while (m_bits < bits && m_loaded < m_specs.size()) {
        Key key = LoadKey(m_specs[m_loaded++]);
        if (key.bits == 0) continue;  // the same for all rows
        key.first = m_bits;
        m_bits += key.bits;
        m_keys.push_back(std::move(key));
    }
    return m_bits >= bits;
}

SortKeys::Key SortKeys::LoadKey(const Namespace::SortSpec& spec) const {
    Key key{LoadWords(spec), 0, 0, 0};
    if (key.words.empty()) return key;
    if (spec.descending) {
        for (uint64_t& word : key.words) word = ~word;
    }
    uint64_t low = key.words.front();
    uint64_t high = low;
    for (const uint64_t word : key.words) {
        low = std::min(low, word);
        high = std::max(high, word);
    }
    key.low = low;
    key.bits = static_cast<unsigned>(std::bit_width(high - low));
    return key;
}

budgeted_vector<uint64_t> SortKeys::LoadWords(const Namespace::SortSpec& spec) const {
    const RefCntPtr<Column> column = m_table.GetColumn(spec.name);
    const uint64_t count = m_table.GetCount();
    budgeted_vector<uint64_t> words(count);
    const auto read = [&](auto tag, auto convert) {
        using T = typename decltype(tag)::type;
        for (uint64_t row = 0; row < count;) {
            OperatorProgressCallback::Check(m_progress);
            const uint64_t rows = std::min(
                {column->Seek(m_table.GetStart() + row, std::min(blockRows, count - row)), count - row, blockRows});
            if (rows == 0)
                throw QVE_RangeError(status::TableSorter_Rows, "TableSorter: short column " + narrow(spec.name));
            const T* values = column->GetInput().values<T>();
            for (uint64_t i = 0; i < rows; ++i) words[row + i] = convert(values[i]);
            row += rows;
        }
    };
    const auto resolve = [&](auto convert) {
        return with_atom(column->GetPrimitiveType(usrpropkey::compression), [&](auto tag) { read(tag, convert); });
    };
    if (column->GetStorageName() == Column::storageVal) {
        std::fill(words.begin(), words.end(), 0);
        return words;
    }
    if (!column->IsCompressed() || column->HasProperty(usrpropkey::comparable)) {
        if (!resolve([](auto x) { return sort_word(x); })) {
            throw QVE_InvalidArgument(status::TableSorter_ResolveSort, "TableSorter::ResolveSort");
        }
        return words;
    }
    resolve([](auto x) { return is_null(x) ? ~uint64_t{0} : static_cast<uint64_t>(raw(x)); });
    const DictionaryRanks ranks(*column->GetHeap(), words, m_progress);
    for (uint64_t row = 0; row < count; ++row) {
        if (row % blockRows == 0) OperatorProgressCallback::Check(m_progress);
        words[row] = ranks.GetRank(words[row]);
    }
    return words;
}

void SortKeys::FillChunk(unsigned chunk, const unsigned* rows, uint64_t count, uint64_t* items) {
    const uint64_t from = uint64_t{chunk} * chunkBits;
    const uint64_t to = from + chunkBits;
    Load(to);
    for (uint64_t i = 0; i < count; ++i) items[i] = rows ? rows[i] : i;
    for (const Key& key : m_keys) {
        const uint64_t end = key.first + key.bits;
        if (end <= from || key.first >= to) continue;
        // The chunk's place within the word: bits below it fall off on the right, those above on the left.
        const unsigned right = end > to ? static_cast<unsigned>(end - to) : 0;
        const unsigned left = end < to ? static_cast<unsigned>(to - end) : 0;
        const uint64_t* words = key.words.data();
        for (uint64_t block = 0; block < count; block += blockRows) {
            OperatorProgressCallback::Check(m_progress);
            const uint64_t last = std::min(count, block + blockRows);
            for (uint64_t i = block; i < last; ++i) {
                const uint64_t word = words[static_cast<unsigned>(items[i])] - key.low;
                items[i] |= (word >> right << left) << chunkBits;
            }
        }
    }
}

bool SortKeys::Less(unsigned a, unsigned b) {
    for (size_t k = 0;; ++k) {
        if (k == m_keys.size() && !Load(m_bits + 1)) return false;
        const budgeted_vector<uint64_t>& words = m_keys[k].words;
        if (words[a] != words[b]) return words[a] < words[b];
    }
}

}  // namespace qve
