#pragma once

#include <string>
#include <string_view>
#include <unordered_set>

namespace qve {

/// The texts of the tokens of one lexed text, each held once.
class VQLTokenSymbols {
public:
    /// Points at the owned text; valid as long as the table.
    using token = const std::wstring*;

    token Intern(std::wstring_view text);

private:
    struct Hash {
        using is_transparent = void;
        std::size_t operator()(std::wstring_view text) const { return std::hash<std::wstring_view>()(text); }
    };

    std::unordered_set<std::wstring, Hash, std::equal_to<>> m_texts;
};

}  // namespace qve
