#include "algebra/DataExp.h"

#include "algebra/ExpVisitor.h"
#include "storage/Column.h"

namespace qve {

DataExp::DataExp(RefCntPtr<Exp> argument) : Exp(Arguments{std::move(argument)}) {
    m_column = MakeRef<Column>(usrprops{{usrpropkey::name, m_arguments[0]->GetName()}});
}

void DataExp::Accept(ExpVisitor& visitor) {
    visitor.VisitDataExp(*this);
}

RefCntPtr<Column> DataExp::AllocateColumn(const Namespace* input) {
    if (m_bound) return m_column;
    const std::wstring name = GetName();
    m_column = m_arguments[0]->AllocateColumn(input)->GetDataColumn();
    m_column->SetName(name);
    m_isConstant = m_arguments[0]->IsConstant();
    m_bound = true;
    return m_column;
}

void DataExp::Evaluate(unsigned count, unsigned extent, const unsigned* sel, const Namespace* input) {
    EvaluateArguments(count, extent, sel, input);
    const RefCntPtr<DataStream>& tokens = m_arguments[0]->GetColumn()->GetData();
    if (m_column->GetData() != tokens) m_column->SetData(tokens);
}

input_column DataExp::GetResult() const {
    input_column tokens = m_arguments[0]->GetResult();
    tokens.heap = nullptr;
    return tokens;
}

}  // namespace qve
