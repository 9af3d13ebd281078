#pragma once

#include "system/VQLException.h"
#include "vql/syntax/VQLTokenSymbols.h"

namespace qve {

enum class VQLTokenType { leftParenthesis, rightParenthesis, symbol, literal, identifier };

/// One word of a statement, with the position of its first character.
class VQLToken {
public:
    VQLToken(VQLTokenType type, VQLPosition position, VQLTokenSymbols::token value)
        : m_type(type), m_position(position), m_value(value) {}
    VQLTokenType GetType() const { return m_type; }
    const VQLPosition& GetPosition() const { return m_position; }
    /// The text as written, with its quotes, brackets and escapes.
    VQLTokenSymbols::token GetValue() const { return m_value; }

private:
    VQLTokenType m_type;
    VQLPosition m_position;
    VQLTokenSymbols::token m_value;
};

}  // namespace qve
