#pragma once

#include "algebra/TokenMemo.h"

namespace qve {

class Column;

/// Carries rows of dictionary columns into another dictionary, each distinct value once. A value of another type is
/// converted to the target's.
class TokenTranslator {
public:
    /// For tokens that go to a column whose tokens are `width` bytes wide.
    explicit TokenTranslator(unsigned width) : m_memo(width) {}

    /// Writes the given rows of `source`, whose page is `tokens`, to the same rows of `out`, a page of `target`.
    void Translate(unsigned count, const unsigned* sel, const Column& source, const input_column& tokens,
                   const Column& target, const output_column& out);

private:
    TokenMemo m_memo;
};

}  // namespace qve
