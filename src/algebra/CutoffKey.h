#pragma once

#include <cstdint>
#include <unordered_map>
#include <vector>

#include "system/RefCntPtr.h"
#include "types/usratom.h"

namespace qve {

class Column;

/// One sort key of the rows of a flow, compared with that of a row that was kept: the cut-off. Values whose cells have
/// an order are compared as numbers ("words"), the others by their type, each dictionary entry once per cut-off.
class CutoffKey {
public:
    /// `rows` is the key's column in the flow.
    CutoffKey(RefCntPtr<Column> rows, bool descending);
    ~CutoffKey();

    bool HasWords() const { return m_hasWords; }
    /// Must be called on each page before its rows are asked for.
    void StartPage();
    /// The words of `count` rows of the page: a row is the better, the smaller its word is.
    void GetWords(unsigned count, const unsigned* rows, uint64_t* words) const;
    /// Lists the rows of the page whose words are not above the cut-off; returns how many. Room for `count` + 1.
    unsigned Filter(unsigned count, const unsigned* sel, unsigned* out) const;
    /// Below 0 when the row of the page is better than the cut-off, above 0 when it is worse.
    int Compare(unsigned row);

    void SetCutoff(uint64_t word) { m_word = word; }
    /// Takes the cut-off from the first row at the cursor of `kept`, a column with the same cells as the flow's.
    void SetCutoff(const Column& kept);

private:
    struct Operations;
    template <class T>
    static const Operations operationsOf;

    int CompareToken(uint64_t token);

    const RefCntPtr<Column> m_rows;
    const bool m_descending;
    const bool m_hasWords;
    const Operations* m_operations = nullptr;
    const void* m_values = nullptr;  // of the page
    uint64_t m_word = ~uint64_t{0};
    usratom m_value;
    // What is known of dictionary entries: 0 nothing, else the result of the comparison plus 2.
    std::vector<signed char> m_known;
    std::unordered_map<uint64_t, signed char> m_knownOfMany;
};

}  // namespace qve
