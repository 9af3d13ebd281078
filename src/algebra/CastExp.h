#pragma once

#include <string>
#include <utility>

#include "algebra/Exp.h"

namespace qve {

class ConstantExp;

/// A conversion whose kernels are chosen when it is bound: only then the type of the value is known.
class CastExp : public Exp {
public:
    static constexpr const wchar_t* opCast = L"cast";

    /// Converts `value` to the type of the column of `type`, which is not evaluated.
    CastExp(const std::wstring& name, RefCntPtr<Exp> value, RefCntPtr<Exp> type);

    void Accept(ExpVisitor& visitor) override;
    std::wstring GetPrimitiveName() const override;
    input_column GetResult() const override;
    /// Raises 40053 when there is no such conversion.
    RefCntPtr<Column> AllocateColumn(const Namespace* input) override;
    void Evaluate(unsigned count, unsigned extent, const unsigned* sel, const Namespace* input) override;

private:
    void MakeExplicitCast(const Namespace* input);
    RefCntPtr<Exp> MakeScalarCast(const usrprops& target) const;
    RefCntPtr<Exp> MakeVarcharCast(const usrprops& target) const;

    RefCntPtr<Exp> m_inner;  // the calls that do the conversion; null before binding
};

/// Widens two bound expressions to a common type: gives both back, the one that is not of that type inside a cast, not
/// yet bound. Raises 40390 "ResolveCast: " with the names of types that have nothing in common.
std::pair<RefCntPtr<Exp>, RefCntPtr<Exp>> ResolveCast(RefCntPtr<Exp> a, RefCntPtr<Exp> b);

/// The constant converted to the type that `properties` describe, at once and without a kernel; null where the value
/// has no counterpart.
RefCntPtr<ConstantExp> CastConstant(const ConstantExp& constant, const usrprops& properties);

}  // namespace qve
