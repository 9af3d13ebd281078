#include "algebra/CutoffKey.h"

#include <algorithm>

#include "algebra/sort_word.h"
#include "algebra/status.h"
#include "primitives/within_cutoff.h"
#include "storage/Column.h"
#include "system/QuillonException.h"

namespace qve {

namespace {

// Dictionaries of more bytes or entries are remembered by hash.
constexpr uint64_t directTokens = 1u << 20;
// Rows that are tested together before any is looked at by itself.
constexpr unsigned blockRows = 128;

template <class T>
uint64_t Word(T x, bool descending) {
    const uint64_t word = sort_word(x);
    return descending ? ~word : word;
}

// Whether any of the values may be within the cut-off.
template <class T>
bool AnyWithin(const T* values, unsigned count, uint64_t word, bool descending) {
    bool within = false;
    for (unsigned i = 0; i < count; ++i) within |= Word(values[i], descending) <= word;
    return within;
}

double ValueOfWord(uint64_t word) {
    constexpr uint64_t sign = uint64_t{1} << 63;
    return std::bit_cast<double>(word ^ (word & sign ? sign : ~uint64_t{0}));
}

template <class T>
unsigned FilterValues(const T* values, unsigned count, const unsigned* sel, uint64_t word, bool descending,
                      unsigned* out) {
    unsigned found = 0;
    if (sel) {
        for (unsigned i = 0; i < count; ++i) {
            out[found] = sel[i];
            found += Word(values[sel[i]], descending) <= word;
        }
        return found;
    }
    for (unsigned first = 0; first < count; first += blockRows) {
        const unsigned rows = std::min(blockRows, count - first);
        bool within;
        if constexpr (std::is_same_v<T, double>) {
            // A cut-off that is no number compares with nothing, so every block passes.
            const double cutoff = ValueOfWord(descending ? ~word : word);
            within =
                descending ? any_not_below(values + first, rows, cutoff) : any_not_above(values + first, rows, cutoff);
        } else {
            within = AnyWithin(values + first, rows, word, descending);
        }
        if (!within) continue;
        for (unsigned i = first; i < first + rows; ++i) {
            out[found] = i;
            found += Word(values[i], descending) <= word;
        }
    }
    return found;
}

}  // namespace

/// The work over the cells of one type.
struct CutoffKey::Operations {
    uint64_t (*word)(const void* values, unsigned row, bool descending);
    uint64_t (*token)(const void* values, unsigned row);
    void (*words)(const void* values, unsigned count, const unsigned* rows, bool descending, uint64_t* words);
    unsigned (*filter)(const void* values, unsigned count, const unsigned* sel, uint64_t word, bool descending,
                       unsigned* out);
};

template <class T>
constexpr CutoffKey::Operations CutoffKey::operationsOf = {
    [](const void* values, unsigned row, bool descending) {
        return Word(static_cast<const T*>(values)[row], descending);
    },
    [](const void* values, unsigned row) {
        const T token = static_cast<const T*>(values)[row];
        return is_null(token) ? ~uint64_t{0} : static_cast<uint64_t>(raw(token));
    },
    [](const void* values, unsigned count, const unsigned* rows, bool descending, uint64_t* words) {
        const T* typed = static_cast<const T*>(values);
        for (unsigned i = 0; i < count; ++i) words[i] = Word(typed[rows ? rows[i] : i], descending);
    },
    [](const void* values, unsigned count, const unsigned* sel, uint64_t word, bool descending, unsigned* out) {
        return FilterValues(static_cast<const T*>(values), count, sel, word, descending, out);
    },
};

CutoffKey::CutoffKey(RefCntPtr<Column> rows, bool descending)
    : m_rows(std::move(rows)),
      m_descending(descending),
      m_hasWords(!m_rows->IsCompressed() || m_rows->HasProperty(usrpropkey::comparable)) {
    const bool known = with_atom(m_rows->GetPrimitiveType(usrpropkey::compression),
                                 [&](auto tag) { m_operations = &operationsOf<typename decltype(tag)::type>; });
    if (!known) throw QVE_InvalidArgument(status::TableSorter_ResolveSort, "TableSorter::ResolveSort");
}
CutoffKey::~CutoffKey() = default;

void CutoffKey::StartPage() {
    m_values = m_rows->GetInput().data;
}

void CutoffKey::GetWords(unsigned count, const unsigned* rows, uint64_t* words) const {
    m_operations->words(m_values, count, rows, m_descending, words);
}

unsigned CutoffKey::Filter(unsigned count, const unsigned* sel, unsigned* out) const {
    return m_operations->filter(m_values, count, sel, m_word, m_descending, out);
}

int CutoffKey::Compare(unsigned row) {
    if (!m_hasWords) return CompareToken(m_operations->token(m_values, row));
    const uint64_t word = m_operations->word(m_values, row, m_descending);
    return word == m_word ? 0 : (word < m_word ? -1 : 1);
}

int CutoffKey::CompareToken(uint64_t token) {
    signed char& known = token < m_known.size() ? m_known[token] : m_knownOfMany[token];
    if (known == 0) {
        usratom value;
        m_rows->GetHeap()->get(token, value);
        int order;
        if (value.isnull() || m_value.isnull()) {
            order = static_cast<int>(m_value.isnull()) - static_cast<int>(value.isnull());
        } else {
            order = m_rows->GetType()->compare(value, m_value);
        }
        known = static_cast<signed char>((m_descending ? -order : order) + 2);
    }
    return known - 2;
}

void CutoffKey::SetCutoff(const Column& kept) {
    if (m_hasWords) {
        m_word = m_operations->word(kept.GetInput().data, 0, m_descending);
        return;
    }
    const usrheap& heap = *m_rows->GetHeap();
    const usratom& value = heap.get(m_operations->token(kept.GetInput().data, 0));
    // A copy: what the heap gives is gone with its next operation.
    m_value = value.isnull() ? usratom(m_rows->GetType()) : usratom(m_rows->GetType(), value.data(), value.length());
    m_known.assign(std::min(heap.next(), static_cast<unsigned long long>(directTokens)), 0);
    m_knownOfMany.clear();
}

}  // namespace qve
