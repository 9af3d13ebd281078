#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "storage/stream/DataStream.h"
#include "system/RefCntPtr.h"
#include "types/input_column.h"
#include "types/output_column.h"

namespace qve {

class Column;

/// The results of a function of one dictionary column, by token, so that it is computed once for each distinct value
/// that occurs and not once for each row. Filled as tokens come up:
///
///     for (rows = memo.Recall(...); compute the result of `rows`, which is not known yet; memo.Remember(rows, ...);)
///
/// The function must depend on nothing but the value. Gives itself up when it does not pay.
class TokenMemo {
public:
    /// `width` is the number of bytes of a result: 1, 2, 4 or 8.
    explicit TokenMemo(unsigned width);
    ~TokenMemo();

    /// Prepares for a page of `tokens`. False when the dictionary is too large for a table, or its values repeat too
    /// little: then the results are to be computed without the memo, now and later.
    bool Begin(const Column& tokens);
    /// Writes the known results of the given rows, and lists the rows whose result is not known, ascending; the list is
    /// valid until the next call.
    std::span<const unsigned> Recall(unsigned count, const unsigned* sel, const input_column& tokens,
                                     const output_column& out);
    /// Takes the results of rows that Recall listed out of `out`.
    void Remember(std::span<const unsigned> rows, const input_column& tokens, const output_column& out);

    /// Whether every result so far was known not to be null: what the not-null flag of the results is to be.
    bool IsNotNull() const { return m_notNull; }
    /// Tells whether the results of the rows that Recall listed are known not to be null.
    void ReportNotNull(bool notNull) { m_notNull = m_notNull && notNull; }

private:
    template <class Token, class Result>
    unsigned RecallAs(unsigned count, const unsigned* sel, const Token* tokens, Result* out);
    template <class Token, class Result>
    void RememberAs(std::span<const unsigned> rows, const Token* tokens, const Result* out);

    const unsigned m_width;
    RefCntPtr<DataStream> m_dictionary;
    uint64_t m_limit = 0;                // tokens below have a slot of their own; all others, being null, the last one
    std::vector<unsigned char> m_known;  // by slot
    std::vector<unsigned char> m_results;
    std::vector<unsigned> m_missing;
    uint64_t m_rows = 0;
    uint64_t m_misses = 0;
    bool m_notNull = true;
    bool m_off = false;
};

}  // namespace qve
