#include <algorithm>
#include <ostream>

#include "cli/ResultWriter.h"
#include "cli/display_width.h"
#include "cli/value_text.h"

namespace qve::cli {
namespace {

/// One line for each value, for rows that are wider than the terminal.
class VerticalWriter : public ResultWriter {
public:
    explicit VerticalWriter(std::ostream& output) : m_output(output) {}

    void Begin(const std::vector<ResultColumn>& columns) override {
        for (const ResultColumn& column : columns) {
            m_names.push_back(Printable(column.name));
            m_width = std::max(m_width, DisplayWidth(m_names.back()));
        }
    }
    void Row(const QVE_Value* values) override {
        m_output << "-[ row " << ++m_rowCount << " ]-\n";
        for (std::size_t i = 0; i < m_names.size(); ++i) {
            m_output << m_names[i] << std::string(m_width - DisplayWidth(m_names[i]), ' ') << " | "
                     << (values[i].type & QVE_NULL ? "NULL" : Printable(ValueText(values[i]))) << "\n";
        }
    }
    void End() override {
        if (m_rowCount == 0) m_output << "(0 rows)\n";
    }

private:
    std::ostream& m_output;
    std::vector<std::string> m_names;
    std::size_t m_width = 0;
    unsigned long long m_rowCount = 0;
};

}  // namespace

std::unique_ptr<ResultWriter> MakeVerticalWriter(std::ostream& output) {
    return std::make_unique<VerticalWriter>(output);
}

}  // namespace qve::cli
