#include "algebra/Select.h"

#include "algebra/OperatorVisitor.h"
#include "algebra/status.h"
#include "storage/Column.h"
#include "system/QuillonException.h"
#include "types/datatraits.h"

namespace qve {

Select::Select(RefCntPtr<DataFlow> source, RefCntPtr<Exp> predicate, double selectivity)
    : DataFlow(source, source->GetColumnNames()), m_predicate(std::move(predicate)), m_selectivity(selectivity) {
    if (!m_predicate) throw QVE_InvalidArgument(status::Select_Select, "Select::Select");
}

Select::Select(RefCntPtr<DataFlow> source, RefCntPtr<Exp> predicate)
    : Select(std::move(source), std::move(predicate), datatraits<double>::null) {}

Select::~Select() = default;

void Select::Accept(OperatorVisitor& visitor) {
    visitor.VisitSelect(*this);
}

void Select::Bind() {
    m_bound = m_predicate->AllocateColumn(m_source.get());
    if (m_predicate->IsConstant()) {
        unsigned passing[2];
        m_constantResult = m_predicate->Select(1, 1, passing, nullptr, m_source.get());
    }
    m_isBound = true;
}

void Select::ResetCursor() {
    m_passed.store(0, std::memory_order_relaxed);
    DataFlow::ResetCursor();
}

unsigned Select::Next(unsigned pageSize) {
    if (!m_isBound) Bind();
    if (m_constantResult == 0) return SetPage(0);
    if (DataFlow::Next(pageSize) == 0) return 0;
    for (const Undense& column : m_undense) column.shown->ShareStreams(*column.source);
    if (!m_predicate->IsConstant()) {
        m_passing.resize(m_extent + size_t{1});  // the branch-free kernels write one position past the last hit
        const unsigned passed =
            m_predicate->Select(m_selectionCount, m_extent, m_passing.data(), m_selection, m_source.get());
        if (passed != m_selectionCount) m_selection = m_passing.data();  // all passed: keep, possibly null
        m_selectionCount = passed;
    }
    m_passed.store(GetPassed() + m_selectionCount, std::memory_order_relaxed);
    return m_extent;
}

RefCntPtr<Column> Select::LoadColumn(const std::wstring& name) const {
    RefCntPtr<Column> column = DataFlow::LoadColumn(name);
    if (!column->HasProperty(usrpropkey::dense)) return column;
    usrprops properties = column->GetProperties();
    properties.erase(usrpropkey::dense);
    auto shown = MakeRef<Column>(std::move(properties), nullptr, column->GetDict());
    shown->ShareStreams(*column);
    m_undense.push_back({column, shown});
    return shown;
}

RefCntPtr<Column> Select::LookupColumn(const std::wstring& name) const {
    RefCntPtr<Column> column = DataFlow::LookupColumn(name);
    if (!column->HasProperty(usrpropkey::dense)) return column;
    usrprops properties = column->GetProperties();
    properties.erase(usrpropkey::dense);
    return MakeRef<Column>(std::move(properties));
}

}  // namespace qve
