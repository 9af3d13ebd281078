#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "types/parse_config.h"

namespace qve {

/// The name of a column and, where the file's header says it otherwise, what that says.
struct TextColumnName {
    std::wstring name;
    std::wstring description;
};

/// The name that a field of a header row gives: without quotes, control characters and brackets.
std::wstring ParseColumnName(std::string_view field, const parse_config& config);

/// Names for columns whose header fields are `headers` (empty where there is none): each is unique, not empty, and at
/// most 127 characters long. Columns without a header are "F" and their number; a repeated name gets a number behind.
std::vector<TextColumnName> MakeColumnNames(const std::vector<std::wstring>& headers);

}  // namespace qve
