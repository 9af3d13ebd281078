#include "algebra/ColumnExp.h"

#include "algebra/ExpVisitor.h"
#include "algebra/Namespace.h"
#include "storage/Column.h"

namespace qve {

ColumnExp::ColumnExp(const RefCntPtr<Column>& column) : ColumnExp(column->GetProperties()) {}

ColumnExp::ColumnExp(usrprops properties) : m_columnName(properties.text(usrpropkey::name)) {
    properties.erase(usrpropkey::encoding);
    m_column = MakeRef<Column>(std::move(properties));
}

ColumnExp::ColumnExp(const std::wstring& name) : ColumnExp(name, name) {}

ColumnExp::ColumnExp(const std::wstring& name, const std::wstring& columnName)
    : Exp(name, {}), m_columnName(columnName) {}

ColumnExp::~ColumnExp() = default;

void ColumnExp::Accept(ExpVisitor& visitor) {
    visitor.VisitColumnExp(*this);
}

input_column ColumnExp::GetResult() const {
    return m_result;
}

RefCntPtr<Column> ColumnExp::AllocateColumn(const Namespace* input) {
    if (m_source) return m_column;
    RefCntPtr<Column> source = input->GetColumn(m_columnName);
    usrprops properties = source->GetProperties();
    properties.set(usrpropkey::name, GetName());
    properties.erase(usrpropkey::encoding);
    m_column = MakeRef<Column>(std::move(properties), nullptr, source->GetDict());
    m_source = std::move(source);
    ShareSource();
    return m_column;
}

// Also the width of tokens is the page's: a flow may widen them on its way.
void ColumnExp::ShareSource() {
    if (m_column->GetTokenSize() != m_source->GetTokenSize()) {
        m_column->SetProperty(usrpropkey::storagewidth, std::to_wstring(m_source->GetTokenSize()));
    }
    if (m_source->GetData()) m_column->ShareStreams(*m_source);
    m_column->SetFlags(m_source->GetFlags());
}

void ColumnExp::Evaluate(unsigned, unsigned, const unsigned*, const Namespace*) {
    ShareSource();
    m_result = m_source->GetInput(0);
}

}  // namespace qve
