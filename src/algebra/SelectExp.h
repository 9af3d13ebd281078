#pragma once

#include <string>

#include "algebra/PrimitiveExp.h"

namespace qve {

/// A call of a select kernel: it lists the rows that pass and computes no column, so it stands at the root of a
/// predicate, or below nothing but and and or.
class SelectExp : public PrimitiveExp {
public:
    /// Raises 40409: there is no result to compute.
    void Evaluate(unsigned count, unsigned extent, const unsigned* sel, const Namespace* input) override;

protected:
    SelectExp(const std::wstring& name, const std::wstring& op, Arguments arguments, bool tokens);
    void MakePrimitiveColumn() override;
};

/// A call of a select kernel of one argument, as a test for null.
class SelectUnaryExp : public SelectExp {
public:
    SelectUnaryExp(const std::wstring& op, RefCntPtr<Exp> argument, bool tokens = true);
    unsigned Select(unsigned count, unsigned extent, unsigned* out, const unsigned* sel,
                    const Namespace* input) override;

private:
    unary_func m_function = nullptr;
};

/// A call of a select kernel of two arguments, as a comparison.
class SelectBinaryExp : public SelectExp {
public:
    SelectBinaryExp(const std::wstring& op, RefCntPtr<Exp> left, RefCntPtr<Exp> right, bool tokens = true);
    unsigned Select(unsigned count, unsigned extent, unsigned* out, const unsigned* sel,
                    const Namespace* input) override;

private:
    binary_func m_function = nullptr;
};

/// A call of a select kernel of three arguments.
class SelectTrinaryExp : public SelectExp {
public:
    SelectTrinaryExp(const std::wstring& op, RefCntPtr<Exp> first, RefCntPtr<Exp> second, RefCntPtr<Exp> third,
                     bool tokens = true);
    unsigned Select(unsigned count, unsigned extent, unsigned* out, const unsigned* sel,
                    const Namespace* input) override;

private:
    ternary_func m_function = nullptr;
};

}  // namespace qve
