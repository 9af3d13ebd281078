#pragma once

#include <memory>
#include <optional>
#include <string_view>

#include "system/QuilICUStringSearch.h"

struct URegularExpression;

namespace qve::QuilICU {

/// A compiled regular expression and the text it is applied to. The work spent on one text is bounded in steps of the
/// matching engine and in stack, so that a hostile pattern does not hang the server; the same text gives up at the same
/// place on every machine. One thread at a time.
class RegularExpression {
public:
    /// Null when the pattern is not well formed.
    static std::unique_ptr<RegularExpression> Open(std::u16string_view pattern);
    ~RegularExpression();
    RegularExpression(const RegularExpression&) = delete;
    RegularExpression& operator=(const RegularExpression&) = delete;

    /// The text must live as long as matches are asked for.
    bool SetText(std::u16string_view text);
    /// The next match, from the start after SetText. Nothing also when the search was given up.
    std::optional<Match> Find();
    /// Whether a search in the text was given up because it took too long or too deep a stack.
    bool GaveUp() const { return m_gaveUp; }
    /// How many groups the pattern has.
    int GroupCount() const;
    /// A group of the match found last; 0 is the whole. Nothing when it took no part.
    std::optional<Match> Group(int group) const;

private:
    explicit RegularExpression(URegularExpression* expression) : m_expression(expression) {}
    URegularExpression* m_expression;
    bool m_gaveUp = false;
};

}  // namespace qve::QuilICU
