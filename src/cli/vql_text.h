#pragma once

#include <string>
#include <string_view>

namespace qve::cli {

/// A text as the language writes it: in quote marks, escaped.
std::string QuoteText(std::string_view text);
/// A part of a name as the language writes it: in brackets, escaped.
std::string QuoteName(std::string_view name);

/// The name of a table, as given on a command line: "schema.table" or "table" alone, which then lies in the schema
/// "main". A point that belongs to a name follows a backslash.
struct TableName {
    static constexpr const char* s_defaultSchema = "main";
    std::string schema;
    std::string table;

    /// Throws std::invalid_argument when there are more than two parts or one is empty.
    static TableName Parse(std::string_view text);
    /// As the language writes it.
    std::string Quote() const { return QuoteName(schema) + "." + QuoteName(table); }
};

}  // namespace qve::cli
