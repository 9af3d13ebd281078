#include "ingest/TextColumnNames.h"

#include <set>

#include "storage/Database.h"
#include "system/unicode.h"
#include "types/parse_value.h"

namespace qve {

std::wstring ParseColumnName(std::string_view field, const parse_config& config) {
    while (!field.empty() && field.front() == config.space) field.remove_prefix(1);
    while (!field.empty() && field.back() == '\r') field.remove_suffix(1);
    std::string text;
    if (parse_varchar_char(text, 0, static_cast<unsigned>(field.size()), field.data(), config)) text = field;
    for (char& c : text) {
        if (static_cast<unsigned char>(c) < static_cast<unsigned char>(' ')) c = '_';
        if (c == '[') c = '(';
        if (c == ']') c = ')';
    }
    for (char& c : text) {
        if (c != '.') break;
        c = '_';
    }
    return widen(text);
}

std::vector<TextColumnName> MakeColumnNames(const std::vector<std::wstring>& headers) {
    constexpr size_t limit = Database::metadataPrecision;
    std::set<std::wstring> taken;
    std::vector<TextColumnName> names;
    for (size_t i = 0; i < headers.size(); ++i) {
        TextColumnName column{headers[i], {}};
        if (column.name.size() > limit) {
            column.description = column.name;
            column.name.resize(limit);
        }
        if (column.name.empty() || taken.count(column.name)) {
            const std::wstring base = column.name.empty() ? L"F" : column.name + L" ";
            const size_t step = column.name.empty() ? i + 1 : 1;
            for (size_t k = 1; k <= headers.size(); ++k) {
                std::wstring candidate = base + std::to_wstring(k * step);
                if (candidate.size() > limit) candidate.erase(limit / 2, candidate.size() - limit);
                if (taken.count(candidate)) continue;
                if (column.description.empty()) column.description = column.name;
                column.name = candidate;
                break;
            }
        }
        taken.insert(column.name);
        names.push_back(std::move(column));
    }
    return names;
}

}  // namespace qve
