#pragma once

#include <exception>
#include <string>

namespace qve {

/// A place in statement text. Line and column count from 0; the column counts characters.
class VQLPosition {
public:
    constexpr VQLPosition() = default;
    constexpr VQLPosition(int lineNo, int columnNo) : m_lineNo(lineNo), m_columnNo(columnNo) {}
    constexpr int GetLineNo() const { return m_lineNo; }
    constexpr int GetColumnNo() const { return m_columnNo; }
    friend constexpr bool operator==(const VQLPosition&, const VQLPosition&) = default;

private:
    int m_lineNo = 0;
    int m_columnNo = 0;
};

/// A fault in a statement: an error code of the 48000 and 49000 blocks and a wide message.
class VQLException : public std::exception {
public:
    explicit VQLException(int code, std::wstring message = {});

    int GetErrorCode() const noexcept { return m_code; }
    const std::wstring& GetWhatW() const noexcept { return m_message; }
    /// The message in UTF-8.
    const std::string& GetWhatA() const noexcept { return m_narrow; }
    const char* what() const noexcept override { return m_narrow.c_str(); }

private:
    int m_code;
    std::wstring m_message;
    std::string m_narrow;
};

/// A fault that has a place in the text. The message does not repeat the place.
class VQLParseException : public VQLException {
public:
    explicit VQLParseException(int code) : VQLException(code) {}
    VQLParseException(int code, std::wstring message, VQLPosition position)
        : VQLException(code, std::move(message)), m_position(position) {}
    const VQLPosition& GetPosition() const noexcept { return m_position; }

private:
    VQLPosition m_position;
};

}  // namespace qve
