#pragma once

#include <iosfwd>
#include <string>
#include <string_view>

namespace qve {

/// Writes nested lists, indented or on one line.
class VQLFormatter {
public:
    enum class Mode { indented, line };

    explicit VQLFormatter(std::wostream& stream, Mode mode = Mode::indented) : m_stream(stream), m_mode(mode) {}

    void OpenList();
    void CloseList();
    /// A word, after a blank if the last thing written was a word or a list.
    void Output(std::wstring_view text);
    /// An annotation; it runs to the end of its line, so that the text can still be read back.
    void Comment(std::wstring_view text);

    /// A list from construction to destruction, beginning with `word` if there is one.
    class Scope {
    public:
        explicit Scope(VQLFormatter& formatter, std::wstring_view word = {});
        ~Scope() { m_formatter.CloseList(); }
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;

    private:
        VQLFormatter& m_formatter;
    };

private:
    enum class Last { lineStart, open, text, close };

    void StartLine();

    std::wostream& m_stream;
    Mode m_mode;
    Last m_last = Last::lineStart;
    bool m_inComment = false;
    std::wstring m_indent;
};

}  // namespace qve
