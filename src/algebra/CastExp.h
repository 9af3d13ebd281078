#pragma once

#include <memory>
#include <string>
#include <utility>

#include "algebra/Exp.h"

namespace qve {

class ConstantExp;
class TokenTranslator;
class usrtype;

/// A conversion whose kernels are chosen when it is bound: only then the type of the value is known.
class CastExp : public Exp {
public:
    static constexpr const wchar_t* opCast = L"cast";

    /// Converts `value` to the type of the column of `type`, which is not evaluated.
    CastExp(const std::wstring& name, RefCntPtr<Exp> value, RefCntPtr<Exp> type);
    ~CastExp() override;

    void Accept(ExpVisitor& visitor) override;
    /// The name of the last kernel of the conversion; empty when there is none.
    std::wstring GetPrimitiveName() const override;
    input_column GetResult() const override;
    /// Raises 40053 when there is no such conversion.
    RefCntPtr<Column> AllocateColumn(const Namespace* input) override;
    void Evaluate(unsigned count, unsigned extent, const unsigned* sel, const Namespace* input) override;

private:
    RefCntPtr<Exp> MakeExplicitCast(const usrtype& target) const;
    RefCntPtr<Exp> MakeScalarCast(const usrtype& target) const;
    RefCntPtr<Exp> MakeVarcharCast() const;
    void MakeColumn(const usrtype& target);

    RefCntPtr<Exp> m_inner;                         // the calls that convert; null before binding
    std::unique_ptr<TokenTranslator> m_translator;  // when the text must also change its type
};

/// The type to which two columns with these properties widen. Raises 40390 "ResolveCast: " with the names of types that
/// have nothing in common.
const usrtype* CommonType(const usrprops& a, const usrprops& b);

/// Widens two bound expressions to a common type: gives both back, one that is not of that type inside a cast that is
/// not yet bound. Raises what CommonType does.
std::pair<RefCntPtr<Exp>, RefCntPtr<Exp>> ResolveCast(RefCntPtr<Exp> a, RefCntPtr<Exp> b);

/// The constant converted to the type that `properties` describe, at once; null where the value has no counterpart.
RefCntPtr<ConstantExp> CastConstant(const ConstantExp& constant, const usrprops& properties);

}  // namespace qve
