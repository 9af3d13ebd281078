#include "algebra/SortKeys.h"

#include <algorithm>
#include <bit>
#include <type_traits>

#include "algebra/DictionaryRanks.h"
#include "algebra/OperatorProgressCallback.h"
#include "algebra/Table.h"
#include "algebra/radix_sort.h"
#include "algebra/sort_word.h"
#include "algebra/status.h"
#include "storage/Column.h"
#include "system/QuillonException.h"
#include "system/unicode.h"

namespace qve {

namespace {

// Rows that are read, and worked on between two looks at the cancelled flag.
constexpr uint64_t blockRows = 1u << 16;
constexpr unsigned narrowBits = 32;

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
    dense_vector<uint64_t> words = LoadWords(spec);
    Key key{{}, {}, 0, 0};
    if (words.empty()) return key;
    // A descending order is the ascending one of the complements.
    const uint64_t flip = spec.descending ? ~uint64_t{0} : 0;
    const auto [lowest, highest] = Extremes(words);
    const uint64_t low = spec.descending ? ~highest : lowest;
    key.bits = static_cast<unsigned>(std::bit_width(highest - lowest));
    const auto reduce = [&](auto* reduced) {
        for (uint64_t block = 0; block < words.size(); block += blockRows) {
            OperatorProgressCallback::Check(m_progress);
            const uint64_t end = std::min<uint64_t>(words.size(), block + blockRows);
            for (uint64_t row = block; row < end; ++row) {
                reduced[row] = static_cast<std::remove_pointer_t<decltype(reduced)>>((words[row] ^ flip) - low);
            }
        }
    };
    if (key.bits > narrowBits) {
        reduce(words.data());
        key.wide = std::move(words);
    } else if (key.bits > 0) {
        key.narrow.resize(words.size());
        reduce(key.narrow.data());
    }
    return key;
}

std::pair<uint64_t, uint64_t> SortKeys::Extremes(const dense_vector<uint64_t>& words) const {
    uint64_t low = words.front();
    uint64_t high = low;
    for (uint64_t block = 0; block < words.size(); block += blockRows) {
        OperatorProgressCallback::Check(m_progress);
        const uint64_t end = std::min<uint64_t>(words.size(), block + blockRows);
        for (uint64_t row = block; row < end; ++row) {
            low = std::min(low, words[row]);
            high = std::max(high, words[row]);
        }
    }
    return {low, high};
}

dense_vector<uint64_t> SortKeys::LoadWords(const Namespace::SortSpec& spec) const {
    const RefCntPtr<Column> column = m_table.GetColumn(spec.name);
    const uint64_t count = m_table.GetCount();
    dense_vector<uint64_t> words(count);
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
        const auto fill = [&](const auto* words) {
            for (uint64_t block = 0; block < count; block += blockRows) {
                OperatorProgressCallback::Check(m_progress);
                const uint64_t last = std::min(count, block + blockRows);
                for (uint64_t i = block; i < last; ++i) {
                    const uint64_t word = words[static_cast<unsigned>(items[i])];
                    items[i] |= (word >> right << left) << chunkBits;
                }
            }
        };
        key.Visit(fill);
    }
}

void SortKeys::FillWide(uint64_t count, wide_item* items) {
    constexpr unsigned wideBits = wideChunks * chunkBits;
    Load(wideBits);
    for (uint64_t block = 0; block < count; block += blockRows) {
        OperatorProgressCallback::Check(m_progress);
        for (uint64_t i = block, last = std::min(count, block + blockRows); i < last; ++i) items[i] = {0, i};
    }
    for (const Key& key : m_keys) {
        if (key.first >= wideBits) continue;
        const uint64_t end = key.first + key.bits;
        const unsigned right = end > wideBits ? static_cast<unsigned>(end - wideBits) : 0;
        const unsigned left = end < wideBits ? static_cast<unsigned>(wideBits - end) : 0;
        key.Visit([&](const auto* words) {
            for (uint64_t block = 0; block < count; block += blockRows) {
                OperatorProgressCallback::Check(m_progress);
                const uint64_t last = std::min(count, block + blockRows);
                for (uint64_t i = block; i < last; ++i) {
                    const auto bits = static_cast<unsigned __int128>(uint64_t{words[i]} >> right) << left;
                    items[i].high |= static_cast<uint64_t>(bits >> chunkBits);
                    items[i].low |= static_cast<uint64_t>(bits) << chunkBits;
                }
            }
        });
    }
}

void SortKeys::Release() {
    m_keys.clear();
}

bool SortKeys::Less(unsigned a, unsigned b) {
    for (size_t k = 0;; ++k) {
        if (k == m_keys.size() && !Load(m_bits + 1)) return false;
        const uint64_t first = m_keys[k].At(a);
        const uint64_t second = m_keys[k].At(b);
        if (first != second) return first < second;
    }
}

}  // namespace qve
