// Reading one form from a stream of characters, as a terminal gives them.
#include <istream>

#include "vql/syntax/VQLLexer.h"

namespace qve {

namespace {

/// The character that ends what `c` begins, or 0.
wchar_t Closing(wchar_t c) {
    switch (c) {
        case L'"':
        case L'#':
            return c;
        case L'[':
            return L']';
        case L';':
            return L'\n';
        default:
            return 0;
    }
}

void TrimEnd(std::wstring& text) {
    while (!text.empty() && VQLLexer::IsWhitespace(text.back())) text.pop_back();
}

}  // namespace

std::wstring VQLLexer::ReadWellFormed(std::wistream& input, void* context, void (*prompt)(void* context, int depth)) {
    std::wstring form;
    int depth = 0;
    bool parenthesisSeen = false;
    bool escaped = false;
    bool lineStarts = true;
    wchar_t closing = 0;
    for (;;) {
        if (lineStarts) prompt(context, depth);
        const std::wistream::int_type next = input.get();
        if (next == std::wistream::traits_type::eof()) break;
        const wchar_t c = std::wistream::traits_type::to_char_type(next);
        form += c;
        lineStarts = c == L'\n';
        if (escaped) {
            escaped = false;
        } else if (c == L'\\') {
            escaped = true;
        } else if (closing) {
            if (c == closing) closing = 0;
        } else if (c == L'(') {
            ++depth;
            parenthesisSeen = true;
        } else if (c == L')') {
            --depth;
            parenthesisSeen = true;
        } else {
            closing = Closing(c);
        }
        if (!lineStarts) continue;
        // A backslash at the end of a comment does not carry the comment over the line.
        if (closing == L'\n') closing = 0;
        if (!parenthesisSeen) TrimEnd(form);
        if (depth <= 0 && !form.empty()) return form;
    }
    if (!parenthesisSeen) TrimEnd(form);
    return form;
}

}  // namespace qve
