#include "algebra/SelectExp.h"

#include <algorithm>

#include "algebra/status.h"
#include "storage/Column.h"
#include "system/QuillonException.h"

namespace qve {

SelectExp::SelectExp(const std::wstring& name, const std::wstring& op, Arguments arguments, bool tokens)
    : PrimitiveExp(name, primitive::klassSelect, op, std::move(arguments), tokens) {}

void SelectExp::Evaluate(unsigned, unsigned, const unsigned*, const Namespace*) {
    throw QVE_DomainError(status::SelectExp_Evaluate, "SelectExp::Evaluate");
}

void SelectExp::MakePrimitiveColumn() {
    MakePrimitive();
    m_isConstant = std::all_of(m_arguments.begin(), m_arguments.end(),
                               [](const auto& argument) { return argument->IsConstant(); });
}

SelectUnaryExp::SelectUnaryExp(const std::wstring& op, RefCntPtr<Exp> argument, bool tokens)
    : SelectExp(L"SelectUnary", op, {std::move(argument)}, tokens) {}

unsigned SelectUnaryExp::Select(unsigned count, unsigned extent, unsigned* out, const unsigned* sel,
                                const Namespace* input) {
    EvaluateOperands(count, extent, sel, input);
    return RunSelect(count, extent, out, sel, [this](unsigned n, const output_column& to, const unsigned* rows) {
        return Resolve(m_function)(n, to, GetInput(0), rows);
    });
}

SelectBinaryExp::SelectBinaryExp(const std::wstring& op, RefCntPtr<Exp> left, RefCntPtr<Exp> right, bool tokens)
    : SelectExp(L"SelectBinary", op, {std::move(left), std::move(right)}, tokens) {}

unsigned SelectBinaryExp::Select(unsigned count, unsigned extent, unsigned* out, const unsigned* sel,
                                 const Namespace* input) {
    EvaluateOperands(count, extent, sel, input);
    return RunSelect(count, extent, out, sel, [this](unsigned n, const output_column& to, const unsigned* rows) {
        return Resolve(m_function)(n, to, GetInput(0), GetInput(1), rows);
    });
}

SelectTrinaryExp::SelectTrinaryExp(const std::wstring& op, RefCntPtr<Exp> first, RefCntPtr<Exp> second,
                                   RefCntPtr<Exp> third, bool tokens)
    : SelectExp(L"SelectTrinary", op, {std::move(first), std::move(second), std::move(third)}, tokens) {}

unsigned SelectTrinaryExp::Select(unsigned count, unsigned extent, unsigned* out, const unsigned* sel,
                                  const Namespace* input) {
    EvaluateOperands(count, extent, sel, input);
    return RunSelect(count, extent, out, sel, [this](unsigned n, const output_column& to, const unsigned* rows) {
        return Resolve(m_function)(n, to, GetInput(0), GetInput(1), GetInput(2), rows);
    });
}

}  // namespace qve
