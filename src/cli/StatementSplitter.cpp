#include "cli/StatementSplitter.h"

namespace qve::cli {
namespace {

bool IsSpace(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}
bool IsContinuation(char c) {
    return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}
bool HasEscapes(char closing) {
    return closing == '"' || closing == ']';
}

/// The character that ends what `c` begins; 0 when it begins nothing.
char Closing(char c) {
    switch (c) {
        case '"':
        case '#':
            return c;
        case '[':
            return ']';
        case ';':
            return '\n';
        default:
            return 0;
    }
}

}  // namespace

void StatementSplitter::Advance() {
    const char c = m_text[m_at++];
    if (c == '\n') {
        ++m_line;
        m_column = 0;
    } else if (!IsContinuation(c)) {
        ++m_column;
    }
}

bool StatementSplitter::SkipComment() {
    while (m_at < m_text.size() && m_text[m_at] != '\n') Advance();
    return m_at < m_text.size();
}

/// Passes over blanks and comments up to the start of a statement.
void StatementSplitter::SkipBetween() {
    while (m_at < m_text.size()) {
        if (m_closing == '\n' || m_text[m_at] == ';') {
            m_closing = '\n';
            if (!SkipComment()) return;
            m_closing = 0;
        } else if (IsSpace(m_text[m_at])) {
            Advance();
        } else {
            m_begun = true;
            m_start = m_at;
            m_startLine = m_line;
            m_startColumn = m_column;
            return;
        }
    }
}

/// Scans on; true at the end of the statement.
bool StatementSplitter::ScanStatement() {
    while (m_at < m_text.size()) {
        const char c = m_text[m_at];
        if (m_closing) {
            if (c == '\\' && HasEscapes(m_closing)) {
                if (m_at + 1 == m_text.size()) return false;  // what it escapes is still to come
                Advance();
            } else if (c == m_closing) {
                m_closing = 0;
            }
            Advance();
            continue;
        }
        if (m_depth == 0 && m_at != m_start && (c == '(' || IsSpace(c) || c == ';')) return true;
        m_closing = Closing(c);
        Advance();
        if (c == '(') ++m_depth;
        if (c == ')' && --m_depth <= 0) return true;
    }
    return false;
}

SourceStatement StatementSplitter::Take() {
    SourceStatement statement{m_text.substr(m_start, m_at - m_start), m_startLine, m_startColumn};
    Drop();
    return statement;
}

void StatementSplitter::Drop() {
    m_text.erase(0, m_at);
    m_at = 0;
    m_begun = false;
    m_depth = 0;
    m_closing = 0;
}

std::optional<SourceStatement> StatementSplitter::Next() {
    if (!m_begun) SkipBetween();
    if (!m_begun || !ScanStatement()) return std::nullopt;
    return Take();
}

std::optional<SourceStatement> StatementSplitter::TakeRest() {
    if (std::optional<SourceStatement> statement = Next()) return statement;
    const bool begun = m_begun;
    while (m_at < m_text.size()) Advance();
    if (begun) return Take();
    Drop();
    return std::nullopt;
}

void StatementSplitter::Clear() {
    while (m_at < m_text.size()) Advance();
    Drop();
}

}  // namespace qve::cli
