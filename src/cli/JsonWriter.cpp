#include <nlohmann/json.hpp>
#include <ostream>

#include "cli/ResultWriter.h"
#include "cli/value_text.h"

namespace qve::cli {
namespace {

using nlohmann::json;

std::string Quote(const std::string& text) {
    return json(text).dump(-1, ' ', false, json::error_handler_t::replace);
}

/// What JSON has no number for is null.
std::string ValueJson(const QVE_Value& value) {
    if (value.type & QVE_NULL) return "null";
    const std::string text = ValueText(value);
    if (QVE_TYPE(value.type) == QVE_BOOL) return text;
    if (!IsNumber(value.type)) return Quote(text);
    return text.find_first_of("ni") == std::string::npos ? text : "null";
}

/// Objects, one line for each row.
class JsonWriter : public ResultWriter {
public:
    JsonWriter(std::ostream& output, bool lines) : m_output(output), m_lines(lines) {}

    void Begin(const std::vector<ResultColumn>& columns) override {
        for (const ResultColumn& column : columns) m_keys.push_back(Quote(column.name));
        if (!m_lines) m_output << "[";
    }
    void Row(const QVE_Value* values) override {
        m_output << (m_lines ? "{" : m_isFirst ? "\n  {" : ",\n  {");
        m_isFirst = false;
        for (std::size_t i = 0; i < m_keys.size(); ++i) {
            m_output << (i == 0 ? "" : ", ") << m_keys[i] << ": " << ValueJson(values[i]);
        }
        m_output << (m_lines ? "}\n" : "}");
    }
    void End() override {
        if (!m_lines) m_output << (m_isFirst ? "]\n" : "\n]\n");
    }

private:
    std::ostream& m_output;
    const bool m_lines;
    std::vector<std::string> m_keys;
    bool m_isFirst = true;
};

}  // namespace

std::unique_ptr<ResultWriter> MakeJsonWriter(std::ostream& output, bool lines) {
    return std::make_unique<JsonWriter>(output, lines);
}

}  // namespace qve::cli
