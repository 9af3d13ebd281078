#pragma once

#include <utility>

#include "ingest/TextColumnParser.h"
#include "storage/Column.h"
#include "types/datatraits.h"
#include "types/parse_config.h"

namespace qve {

/// Values of an atom type. Read reads the text of one as a parse_function does: it returns true for what is no value.
template <class T, class Read>
class ScalarParser : public TextColumnParser {
public:
    ScalarParser(usrprops type, parse_config config, unsigned rank, Read read)
        : TextColumnParser(std::move(type), std::move(config), rank), m_read(std::move(read)) {}

    RefCntPtr<TextColumnParser> Clone() const override {
        return MakeRef<ScalarParser>(m_type, m_config, m_rank, m_read);
    }

    void Parse(unsigned count, unsigned first, uint64_t row, const TextFields& fields) override {
        T* const out = static_cast<T*>(m_column->GetOutput(0).data) + first;
        const char* const text = fields.text;
        const auto space = static_cast<unsigned char>(m_config.space);
        const auto blank = [space](char c) { return static_cast<unsigned char>(c) <= space; };
        unsigned empty = 0;
        const uint64_t errors = m_errors;
        for (unsigned i = 0; i < count; ++i) {
            unsigned begin = fields.begins[i * fields.stride] + 1;
            unsigned end = fields.ends[i * fields.stride];
            while (begin < end && blank(text[begin])) ++begin;
            while (begin < end && blank(text[end - 1])) --end;
            if (end - begin >= 2 && text[begin] == text[end - 1] && IsQuote(text[begin])) {
                ++begin;
                --end;
            }
            if (begin == end) {
                out[i] = datatraits<T>::null;
                ++empty;
            } else if (m_read(out[i], begin, end, text, m_config)) {
                out[i] = datatraits<T>::null;
                CountError(row + i);
            }
        }
        m_nonEmpty += count - empty;
        if (empty || m_errors != errors) m_column->SetFlags(m_column->GetFlags() & ~column_flags::not_null);
    }

protected:
    Read m_read;

private:
    bool IsQuote(char c) const { return c != 0 && (c == m_config.double_quote || c == m_config.single_quote); }
};

}  // namespace qve
