#pragma once

#include <string>

#include "algebra/PrimitiveExp.h"

namespace qve {

/// A call of a map kernel without arguments, as "random"; drawn anew for each row.
class MapNullaryExp : public PrimitiveExp {
public:
    MapNullaryExp(const std::wstring& name, const std::wstring& op);
    void Evaluate(unsigned count, unsigned extent, const unsigned* sel, const Namespace* input) override;

private:
    nullary_func m_function = nullptr;
};

/// A call of a map kernel of one argument.
class MapUnaryExp : public PrimitiveExp {
public:
    MapUnaryExp(const std::wstring& name, const std::wstring& op, RefCntPtr<Exp> argument, bool tokens = true);
    void Evaluate(unsigned count, unsigned extent, const unsigned* sel, const Namespace* input) override;

private:
    unary_func m_function = nullptr;
};

/// A call of a map kernel of two arguments.
class MapBinaryExp : public PrimitiveExp {
public:
    MapBinaryExp(const std::wstring& name, const std::wstring& op, RefCntPtr<Exp> left, RefCntPtr<Exp> right,
                 bool tokens = true);
    void Evaluate(unsigned count, unsigned extent, const unsigned* sel, const Namespace* input) override;

private:
    binary_func m_function = nullptr;
};

/// A call of a map kernel of three arguments.
class MapTrinaryExp : public PrimitiveExp {
public:
    MapTrinaryExp(const std::wstring& name, const std::wstring& op, RefCntPtr<Exp> first, RefCntPtr<Exp> second,
                  RefCntPtr<Exp> third, bool tokens = true);
    void Evaluate(unsigned count, unsigned extent, const unsigned* sel, const Namespace* input) override;

private:
    ternary_func m_function = nullptr;
};

}  // namespace qve
