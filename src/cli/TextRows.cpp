#include "cli/TextRows.h"

#include "cli/value_text.h"

namespace qve::cli {

void TextRows::Row(const QVE_Value* values) {
    std::vector<std::string>& row = rows.emplace_back();
    for (std::size_t i = 0; i < columns.size(); ++i) row.push_back(ValueText(values[i]));
}

}  // namespace qve::cli
