#include <algorithm>
#include <ostream>

#include "cli/ResultWriter.h"
#include "cli/display_width.h"
#include "cli/value_text.h"

namespace qve::cli {
namespace {

/// Columns beside each other, as wide as their widest value. The widths are those of the first rows: a long result is
/// printed as it comes, and a wider value further down juts out.
class TableWriter : public ResultWriter {
public:
    TableWriter(std::ostream& output, bool counted) : m_output(output), m_counted(counted) {}

    void Begin(const std::vector<ResultColumn>& columns) override {
        m_columns = columns;
        for (const ResultColumn& column : columns) {
            m_names.push_back(Printable(column.name));
            m_widths.push_back(DisplayWidth(m_names.back()));
        }
    }

    void Row(const QVE_Value* values) override {
        std::vector<std::string> cells;
        for (std::size_t i = 0; i < m_columns.size(); ++i) {
            cells.push_back(values[i].type & QVE_NULL ? "NULL" : Printable(ValueText(values[i])));
        }
        ++m_rowCount;
        if (m_headerPrinted) {
            Print(cells, false);
            return;
        }
        for (std::size_t i = 0; i < cells.size(); ++i) m_widths[i] = std::max(m_widths[i], DisplayWidth(cells[i]));
        m_rows.push_back(std::move(cells));
        if (m_rows.size() == s_measuredRows) PrintMeasured();
    }

    void End() override {
        if (!m_headerPrinted) PrintMeasured();
        if (m_counted) m_output << "(" << m_rowCount << (m_rowCount == 1 ? " row)\n" : " rows)\n");
    }

private:
    static constexpr std::size_t s_measuredRows = 10000;

    void PrintMeasured() {
        m_headerPrinted = true;
        Print(m_names, true);
        for (std::size_t i = 0; i < m_widths.size(); ++i) {
            m_output << (i == 0 ? "-" : "+-") << std::string(m_widths[i], '-') << "-";
        }
        m_output << "\n";
        for (const std::vector<std::string>& row : m_rows) Print(row, false);
        m_rows.clear();
    }

    void Print(const std::vector<std::string>& cells, bool isHeader) {
        for (std::size_t i = 0; i < cells.size(); ++i) {
            const std::size_t width = DisplayWidth(cells[i]);
            const std::string padding(m_widths[i] > width ? m_widths[i] - width : 0, ' ');
            const bool isLast = i + 1 == cells.size();
            m_output << (i == 0 ? " " : "| ");
            if (!isHeader && IsNumber(m_columns[i].type)) {
                m_output << padding << cells[i];
            } else {
                m_output << cells[i] << (isLast ? std::string() : padding);
            }
            if (!isLast) m_output << " ";
        }
        m_output << "\n";
    }

    std::ostream& m_output;
    const bool m_counted;
    std::vector<ResultColumn> m_columns;
    std::vector<std::string> m_names;
    std::vector<std::size_t> m_widths;
    std::vector<std::vector<std::string>> m_rows;  // until there are enough to measure
    bool m_headerPrinted = false;
    unsigned long long m_rowCount = 0;
};

}  // namespace

std::unique_ptr<ResultWriter> MakeTableWriter(std::ostream& output, bool counted) {
    return std::make_unique<TableWriter>(output, counted);
}

}  // namespace qve::cli
