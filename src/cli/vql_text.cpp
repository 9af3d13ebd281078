#include "cli/vql_text.h"

#include <stdexcept>
#include <vector>

namespace qve::cli {

std::string QuoteText(std::string_view text) {
    std::string quoted = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\') {
            quoted += '\\';
            quoted += c;
        } else if (c == '\n') {
            quoted += "\\n";
        } else if (c == '\r') {
            quoted += "\\r";
        } else if (c == '\t') {
            quoted += "\\t";
        } else {
            quoted += c;
        }
    }
    return quoted + '"';
}

std::string QuoteName(std::string_view name) {
    std::string quoted = "[";
    for (const char c : name) {
        if (c == ']' || c == '\\') quoted += '\\';
        quoted += c;
    }
    return quoted + ']';
}

TableName TableName::Parse(std::string_view text) {
    std::vector<std::string> parts(1);
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\\' && i + 1 < text.size() && (text[i + 1] == '.' || text[i + 1] == '\\')) {
            parts.back() += text[++i];
        } else if (text[i] == '.') {
            parts.emplace_back();
        } else {
            parts.back() += text[i];
        }
    }
    if (parts.size() == 1) parts.insert(parts.begin(), s_defaultSchema);
    if (parts.size() != 2 || parts[0].empty() || parts[1].empty()) {
        throw std::invalid_argument("\"" + std::string(text) +
                                    "\" is no table name: give \"table\" or \"schema.table\"");
    }
    return {parts[0], parts[1]};
}

}  // namespace qve::cli
