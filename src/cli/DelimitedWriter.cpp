#include <ostream>

#include "cli/ResultWriter.h"
#include "cli/value_text.h"

namespace qve::cli {
namespace {

/// With commas: quote marks where a field needs them, nothing for a null, "" for an empty text. With tabs: backslash
/// escapes, "\N" for a null.
class DelimitedWriter : public ResultWriter {
public:
    DelimitedWriter(std::ostream& output, bool tabs) : m_output(output), m_tabs(tabs) {}

    void Begin(const std::vector<ResultColumn>& columns) override {
        m_columnCount = columns.size();
        for (std::size_t i = 0; i < columns.size(); ++i)
            Field(i, m_tabs ? Escape(columns[i].name) : Quote(columns[i].name));
        m_output << "\n";
    }
    void Row(const QVE_Value* values) override {
        for (std::size_t i = 0; i < m_columnCount; ++i) {
            const bool isNull = (values[i].type & QVE_NULL) != 0;
            if (m_tabs) {
                Field(i, isNull ? "\\N" : Escape(ValueText(values[i])));
            } else {
                Field(i, isNull ? "" : Quote(ValueText(values[i])));
            }
        }
        m_output << "\n";
    }
    void End() override {}

private:
    void Field(std::size_t column, const std::string& text) {
        if (column != 0) m_output << (m_tabs ? '\t' : ',');
        m_output << text;
    }
    static std::string Quote(const std::string& text) {
        if (!text.empty() && text.find_first_of(",\"\r\n") == std::string::npos) return text;
        std::string quoted = "\"";
        for (const char c : text) {
            if (c == '"') quoted += '"';
            quoted += c;
        }
        return quoted + '"';
    }
    static std::string Escape(const std::string& text) {
        std::string escaped;
        for (const char c : text) {
            if (c == '\t') {
                escaped += "\\t";
            } else if (c == '\n') {
                escaped += "\\n";
            } else if (c == '\r') {
                escaped += "\\r";
            } else if (c == '\\') {
                escaped += "\\\\";
            } else {
                escaped += c;
            }
        }
        return escaped;
    }

    std::ostream& m_output;
    const bool m_tabs;
    std::size_t m_columnCount = 0;
};

}  // namespace

std::unique_ptr<ResultWriter> MakeDelimitedWriter(std::ostream& output, bool tabs) {
    return std::make_unique<DelimitedWriter>(output, tabs);
}

}  // namespace qve::cli
