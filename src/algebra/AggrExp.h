#pragma once

#include <string>

#include "algebra/PrimitiveExp.h"

namespace qve {

/// A call of an aggregate kernel. The column of results holds one accumulator for each group; whoever numbers the
/// groups appends rows to it, whose default value is the start value of the aggregate: 0 for counts and totals, null
/// for all others. It stands empty, on temporary streams, once the node is bound.
class AggrExp : public PrimitiveExp {
public:
    void Evaluate(unsigned count, unsigned extent, const unsigned* sel, const Namespace* input) override;

protected:
    AggrExp(const std::wstring& name, const std::wstring& op, Arguments arguments, bool tokens);
    void MakePrimitiveColumn() override;
};

/// An aggregate of the groups alone, as "countstar".
class AggrUnaryExp : public AggrExp {
public:
    AggrUnaryExp(const std::wstring& name, const std::wstring& op);
    void Aggregate(unsigned count, input_column groups, const unsigned* sel) override;

private:
    unary_func m_function = nullptr;
};

/// An aggregate of one argument, as "sum".
class AggrBinaryExp : public AggrExp {
public:
    AggrBinaryExp(const std::wstring& name, const std::wstring& op, RefCntPtr<Exp> argument, bool tokens = true);
    void Aggregate(unsigned count, input_column groups, const unsigned* sel) override;

private:
    binary_func m_function = nullptr;
};

/// An aggregate of two arguments, as "anyif".
class AggrTrinaryExp : public AggrExp {
public:
    AggrTrinaryExp(const std::wstring& name, const std::wstring& op, RefCntPtr<Exp> first, RefCntPtr<Exp> second,
                   bool tokens = true);
    void Aggregate(unsigned count, input_column groups, const unsigned* sel) override;

private:
    ternary_func m_function = nullptr;
};

}  // namespace qve
