#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "system/QuilICUStringSearch.h"

struct URegularExpression;

namespace qve::QuilICU {

/// A compiled regular expression and the text it is applied to. Matching is bounded in time and stack, so that a
/// hostile pattern gives "no match" and not a hanging server. One thread at a time.
class RegularExpression {
public:
    /// Null when the pattern is not well formed.
    static std::unique_ptr<RegularExpression> Open(std::u16string_view pattern);
    ~RegularExpression();
    RegularExpression(const RegularExpression&) = delete;
    RegularExpression& operator=(const RegularExpression&) = delete;

    /// The text must live as long as matches are asked for.
    bool SetText(std::u16string_view text);
    /// The next match, from the start after SetText.
    std::optional<Match> Find();
    /// How many groups the pattern has.
    int GroupCount() const;
    /// A group of the match found last; 0 is the whole. Nothing when it took no part.
    std::optional<Match> Group(int group) const;
    /// The text with every match replaced; "$1" stands for a group. Nothing when ICU fails.
    std::optional<std::u16string> ReplaceAll(std::u16string_view replacement);

private:
    explicit RegularExpression(URegularExpression* expression) : m_expression(expression) {}
    URegularExpression* m_expression;
};

}  // namespace qve::QuilICU
