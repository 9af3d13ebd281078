#include "vql/VQLFormatter.h"

#include <ostream>

namespace qve {

void VQLFormatter::StartLine() {
    m_stream << L'\n' << m_indent;
    m_last = Last::lineStart;
    m_inComment = false;
}

void VQLFormatter::OpenList() {
    if (m_mode == Mode::indented) {
        if (m_last != Last::lineStart) StartLine();
    } else if (m_inComment) {
        StartLine();
    } else if (m_last == Last::text || m_last == Last::close) {
        m_stream << L' ';
    }
    m_stream << L'(';
    m_indent += L"  ";
    m_last = Last::open;
}

void VQLFormatter::CloseList() {
    if (m_inComment) StartLine();
    m_stream << L')';
    m_indent.resize(m_indent.size() < 2 ? 0 : m_indent.size() - 2);
    m_last = Last::close;
}

void VQLFormatter::Output(std::wstring_view text) {
    if (m_inComment) StartLine();
    if (m_last == Last::text || m_last == Last::close) m_stream << L' ';
    m_stream << text;
    m_last = Last::text;
}

void VQLFormatter::Comment(std::wstring_view text) {
    // What would end the comment must not stand in it: names may hold line feeds.
    std::wstring line(text);
    for (wchar_t& c : line)
        if (c == L'\n' || c == L'\r') c = L' ';
    m_stream << L" ; " << line;
    m_inComment = true;
    // The next item starts a line, in either mode.
    m_last = Last::text;
}

VQLFormatter::Scope::Scope(VQLFormatter& formatter, std::wstring_view word) : m_formatter(formatter) {
    m_formatter.OpenList();
    if (!word.empty()) m_formatter.Output(word);
}

}  // namespace qve
