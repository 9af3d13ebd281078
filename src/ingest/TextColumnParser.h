#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "system/RefCntObject.h"
#include "system/RefCntPtr.h"
#include "types/parse_config.h"
#include "types/usrprops.h"

namespace qve {

class Column;

/// Where the values of one column of some records lie in a text. The field of record i begins behind the position
/// begins[i * stride] and ends before ends[i * stride].
struct TextFields {
    const char* text;
    const unsigned* begins;
    const unsigned* ends;
    unsigned stride;
};

/// Parses the fields of one column of a text into a column of values. While the type of a column is being found out
/// there is one for each type that comes into question. One thread at a time; different parsers run side by side.
class TextColumnParser : public RefCntObject {
public:
    static constexpr uint64_t none = ~uint64_t{0};

    /// `type` are the properties of the parsed values. Of parsers that are equal otherwise the lower rank is preferred.
    TextColumnParser(usrprops type, parse_config config, unsigned rank);
    ~TextColumnParser() override;

    /// A parser of the same kind that has parsed nothing.
    virtual RefCntPtr<TextColumnParser> Clone() const = 0;

    /// Makes room for a page of `rows` rows and begins it.
    virtual void Reset(unsigned rows);
    /// Parses `count` records of the page, from its row `first` on; `row` is their number in the text. What is no value
    /// of the type becomes null and is counted; an empty field is null.
    virtual void Parse(unsigned count, unsigned first, uint64_t row, const TextFields& fields) = 0;

    const RefCntPtr<Column>& GetColumn() const { return m_column; }
    const usrprops& GetType() const { return m_type; }
    unsigned GetRank() const { return m_rank; }
    const parse_config& GetConfig() const { return m_config; }
    uint64_t GetErrors() const { return m_errors; }
    uint64_t GetNonEmpty() const { return m_nonEmpty; }
    /// Numbers of records; all ones when there are none.
    uint64_t GetFirstError() const { return m_firstError; }
    uint64_t GetLastError() const { return m_lastError; }

    /// Forgets the counts.
    void ClearErrors();
    /// Gives the parser a column of values with these properties besides those of the type.
    void MakeColumn(const usrprops& properties);

protected:
    void CountError(uint64_t row) {
        if (m_errors++ == 0) m_firstError = row;
        m_lastError = row;
    }

    const usrprops m_type;
    const parse_config m_config;
    const unsigned m_rank;
    RefCntPtr<Column> m_column;
    uint64_t m_errors = 0;
    uint64_t m_nonEmpty = 0;
    uint64_t m_firstError = none;
    uint64_t m_lastError = none;
};

using TextColumnParsers = std::vector<RefCntPtr<TextColumnParser>>;

/// The parsers of all types that come into question for a column; `given` are the properties that the client wants it
/// to have, of which a type leaves only the parsers of that type. Text is the last of them and takes everything. Throws
/// QVE_InvalidArgument 40564 for a type that text cannot be read as.
TextColumnParsers GetTypeParsers(const parse_config& config, const usrprops& textProperties, const usrprops& given);

/// The one of the parsers that does best on `records` records; of parsers that do equally well the first.
/// `parse(parser, from, count)` parses a block of records with one of them.
RefCntPtr<TextColumnParser> ChooseParser(
    TextColumnParsers parsers,
    const std::function<void(TextColumnParser& parser, unsigned from, unsigned count)>& parse, unsigned records);

/// Whether `a` has done better than `b` on the same fields: fewer errors, then the wider value, then the lower rank.
bool CompareParsers(const TextColumnParser& a, const TextColumnParser& b);

/// The type that text of these properties is read as: unlimited UTF-8 in a dictionary of its own.
usrprops TextType(const usrprops& properties);

}  // namespace qve
