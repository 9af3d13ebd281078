#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "types/parse_config.h"

namespace qve {

/// Where the fields of a stretch of text lie: the text between one delimiter and the next. Positions count from the
/// start of the stretch; the delimiter before its first field is at -1, as an unsigned number.
struct SplitText {
    /// The positions of the delimiters of fields and records outside quotes, ascending.
    std::vector<unsigned> delimiters;
    /// For each record how many of `delimiters` end at its end.
    std::vector<unsigned> records;
    /// Bytes that the records take; what follows is the start of another one.
    size_t length = 0;
};

/// Splits text into records and fields, touching each byte once. A quote opens only at the start of a field; inside,
/// delimiters are text, a doubled quote stands for one, and the escape takes the next character along.
class FieldSplitter {
public:
    explicit FieldSplitter(const parse_config& config);

    /// Splits the records that `text` holds whole. With `final` the text ends here: the end closes the last record, and
    /// a quote that nothing closes is text. Memory of `out` is used again.
    void Split(const char* text, size_t length, bool final, SplitText& out) const;

    /// A quoted field does not get longer than this: a quote that is not closed by then is text.
    static constexpr size_t maxQuoted = size_t{64} << 20;

private:
    struct Masks;
    void Classify(const char* text, size_t length, Masks& masks) const;
    size_t SkipQuoted(const char* text, size_t length, size_t quote) const;

    const char m_record;
    const char m_field;
    const char m_double;  // a quote that does not exist is the record delimiter, which no field begins with
    const char m_single;
    const char m_escape;
    const bool m_hasEscape;
};

/// The fields of records as begins and ends with a fixed number of columns, for text in which some record has another
/// number of fields: a short record gets empty fields at its end, the surplus of a long one belongs to its last field,
/// and an empty line is no record unless there is but one column. For record r and column c the entry is r * columns +
/// c: `begins` has the delimiter before the field, `ends` the one behind it. Returns the number of records.
unsigned split_ragged_fields_char_col(const char* text, const SplitText& split, unsigned columns,
                                      std::vector<unsigned>& begins, std::vector<unsigned>& ends);

}  // namespace qve
