#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace qve::cli {

/// One statement of a text, and where it began.
struct SourceStatement {
    std::string text;  ///< UTF-8
    int line = 0;      ///< of its first character, counted from 0
    int column = 0;    ///< in characters
};

/// Cuts text into statements at balanced parentheses, by the rules of the language for comments, strings, dates and
/// identifiers in brackets. What stands outside of parentheses is a statement of its own, for the server to refuse.
class StatementSplitter {
public:
    /// More text; it may break off anywhere but within a character.
    void Feed(std::string_view text) { m_text += text; }
    /// The next complete statement, if there is one.
    std::optional<SourceStatement> Next();
    /// At the end of the text: what is left, complete or not.
    std::optional<SourceStatement> TakeRest();
    /// Whether a statement has begun that is not complete.
    bool IsInside() const { return m_begun; }
    /// Forgets what is not complete.
    void Clear();

private:
    void SkipBetween();
    bool ScanStatement();
    bool SkipComment();
    void Advance();
    SourceStatement Take();
    void Drop();

    std::string m_text;
    std::size_t m_at = 0;  // everything before is scanned
    int m_line = 0;
    int m_column = 0;
    // The statement that has begun.
    bool m_begun = false;
    std::size_t m_start = 0;
    int m_startLine = 0;
    int m_startColumn = 0;
    int m_depth = 0;
    char m_closing = 0;  // the character that ends the literal, identifier or comment that we are in; 0 for none
};

}  // namespace qve::cli
