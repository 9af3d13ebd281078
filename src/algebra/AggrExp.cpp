#include "algebra/AggrExp.h"

#include "storage/Column.h"

namespace qve {

AggrExp::AggrExp(const std::wstring& name, const std::wstring& op, Arguments arguments, bool tokens)
    : PrimitiveExp(name, primitive::klassAggregate, op, std::move(arguments), tokens) {}

void AggrExp::MakePrimitiveColumn() {
    PrimitiveExp::MakePrimitiveColumn();
    const bool counts = m_op == L"count" || m_op == L"countstar" || m_op == L"total";
    if (counts && !m_column->HasProperty(usrpropkey::default_value)) {
        m_column->SetProperty(usrpropkey::default_value, L"0");
    }
}

void AggrExp::Evaluate(unsigned count, unsigned extent, const unsigned* sel, const Namespace* input) {
    EvaluateArguments(count, extent, sel, input);
    FollowDictionary();
}

AggrUnaryExp::AggrUnaryExp(const std::wstring& name, const std::wstring& op) : AggrExp(name, op, {}, false) {}

void AggrUnaryExp::Aggregate(unsigned count, input_column groups, const unsigned* sel) {
    Resolve(m_function)(count, m_column->GetOutput(0), groups, sel);
}

AggrBinaryExp::AggrBinaryExp(const std::wstring& name, const std::wstring& op, RefCntPtr<Exp> argument, bool tokens)
    : AggrExp(name, op, {std::move(argument)}, tokens) {}

void AggrBinaryExp::Aggregate(unsigned count, input_column groups, const unsigned* sel) {
    Resolve(m_function)(count, m_column->GetOutput(0), GetInput(0), groups, sel);
}

AggrTrinaryExp::AggrTrinaryExp(const std::wstring& name, const std::wstring& op, RefCntPtr<Exp> first,
                               RefCntPtr<Exp> second, bool tokens)
    : AggrExp(name, op, {std::move(first), std::move(second)}, tokens) {}

void AggrTrinaryExp::Aggregate(unsigned count, input_column groups, const unsigned* sel) {
    Resolve(m_function)(count, m_column->GetOutput(0), GetInput(0), GetInput(1), groups, sel);
}

}  // namespace qve
