#pragma once

#include <memory>
#include <string>

#include "algebra/PrimitiveExp.h"

namespace qve {

class TokenMemo;

/// A call of a select kernel: it lists the rows that pass and computes no column. Evaluate only evaluates the
/// arguments.
class SelectUnaryExp : public PrimitiveExp {
public:
    SelectUnaryExp(const std::wstring& op, RefCntPtr<Exp> argument, bool tokens = true);
    unsigned Select(unsigned count, unsigned extent, unsigned* out, const unsigned* sel,
                    const Namespace* input) override;

private:
    unary_func m_function = nullptr;
};

/// A call of a select kernel of two arguments, as a comparison.
class SelectBinaryExp : public PrimitiveExp {
public:
    SelectBinaryExp(const std::wstring& op, RefCntPtr<Exp> left, RefCntPtr<Exp> right, bool tokens = true);
    ~SelectBinaryExp() override;
    unsigned Select(unsigned count, unsigned extent, unsigned* out, const unsigned* sel,
                    const Namespace* input) override;

private:
    binary_func m_function = nullptr;
    std::unique_ptr<TokenMemo> m_memo;
};

/// A call of a select kernel of three arguments.
class SelectTrinaryExp : public PrimitiveExp {
public:
    SelectTrinaryExp(const std::wstring& op, RefCntPtr<Exp> first, RefCntPtr<Exp> second, RefCntPtr<Exp> third,
                     bool tokens = true);
    unsigned Select(unsigned count, unsigned extent, unsigned* out, const unsigned* sel,
                    const Namespace* input) override;

private:
    ternary_func m_function = nullptr;
};

}  // namespace qve
