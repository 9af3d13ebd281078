#pragma once

namespace qve::status {

inline constexpr int VQLDataValue_Get = 48022;  // "datatype error"
inline constexpr int VQLDataValue_cmp = 48023;  // "invalid datatype"
inline constexpr int VQLIdentifier_Quoted_NoBracket = 49022;
inline constexpr int VQLIdentifier_Quoted_Unterminated = 49023;
inline constexpr int VQLIdentifier_Quoted_Backslash = 49024;
inline constexpr int VQLIdentifier_Quoted_AfterBracket = 49025;
inline constexpr int VQLIdentifier_Quoted_AfterStop = 49026;
inline constexpr int VQLLexer_ParseLiteral_StringEscape = 49027;
inline constexpr int VQLLexer_ParseLiteral_StringEnd = 49028;
inline constexpr int VQLLexer_ParseLiteral_DateEnd = 49029;
inline constexpr int VQLLexer_ParseLiteral_Date = 49030;
inline constexpr int VQLLexer_ParseLiteral_Number = 49031;
inline constexpr int VQLLexer_Raise = 49032;
inline constexpr int VQLParser_Raise = 49034;
inline constexpr int VQLParser_TokenType = 40526;

}  // namespace qve::status
