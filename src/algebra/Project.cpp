#include "algebra/Project.h"

#include "algebra/ColumnExp.h"
#include "algebra/OperatorVisitor.h"
#include "algebra/take_error_counts.h"
#include "storage/Column.h"
#include "storage/stream/TempFileDataStream.h"
#include "types/usratom.h"
#include "types/usrtype.h"

namespace qve {

namespace {

ColumnNames ProjectedNames(const DataFlow& source, const std::vector<RefCntPtr<Exp>>& expressions) {
    ColumnNames names = source.GetColumnNames();
    for (const RefCntPtr<Exp>& expression : expressions) names.insert(expression->GetName());
    return names;
}

usrprops SpreadProperties(const Column& column) {
    usrprops properties = column.GetProperties();
    properties.erase(usrpropkey::storagetype);
    return properties;
}

}  // namespace

Project::Project(RefCntPtr<DataFlow> source, std::vector<RefCntPtr<Exp>> expressions)
    : DataFlow(source, ProjectedNames(*source, expressions)), m_expressions(std::move(expressions)) {}

Project::~Project() = default;

void Project::Accept(OperatorVisitor& visitor) {
    visitor.VisitProject(*this);
}

RefCntPtr<Exp> Project::Find(const std::wstring& name) const {
    for (const RefCntPtr<Exp>& expression : m_expressions) {
        if (expression->GetName() == name) return expression;
    }
    return nullptr;
}

unsigned Project::Next(unsigned pageSize) {
    if (!m_allocated) {
        for (const auto& entry : m_columns) GetColumn(entry.first);
        for (const RefCntPtr<Exp>& expression : m_expressions) {
            if (expression->IsConstant()) expression->Evaluate(1, 1, nullptr, m_source.get());
        }
        m_allocated = true;
    }
    if (DataFlow::Next(pageSize) == 0) {
        TakeErrors();
        return 0;
    }
    for (const RefCntPtr<Exp>& expression : m_expressions) {
        if (!expression->IsConstant()) {
            expression->Evaluate(m_selectionCount, m_extent, m_selection, m_source.get());
        }
    }
    for (Spread& spread : m_spreads) FillSpread(spread);
    return m_extent;
}

// At its end a source tells what it refused; columns that only have another name pass it on.
void Project::TakeErrors() const {
    for (const RefCntPtr<Exp>& expression : m_expressions) {
        const auto* column = dynamic_cast<const ColumnExp*>(expression.get());
        if (column) TakeErrorCounts(*m_source->GetColumn(column->GetColumnName()), *column->GetColumn());
    }
}

// Consumers read a row of every column at its position, so a single value is written out; a constant only when a page
// is longer than all before.
void Project::FillSpread(Spread& spread) const {
    Column& column = *spread.column;
    const bool fresh = !spread.expression->IsConstant();
    const uint64_t have = fresh ? 0 : column.GetCount();
    if (have >= m_extent) return;
    const input_column result = spread.expression->GetResult();
    usratom value;
    spread.expression->GetColumn()->GetType()->get(result, 0, value);
    if (fresh) column.Resize(0);
    column.Append(static_cast<unsigned>(m_extent - have), value, false);
    column.Seek(0, m_extent);
}

RefCntPtr<Column> Project::LoadColumn(const std::wstring& name) const {
    const RefCntPtr<Exp> expression = Find(name);
    if (!expression) return DataFlow::LoadColumn(name);
    RefCntPtr<Column> column = expression->AllocateColumn(m_source.get());
    if (column->GetStorageName() != Column::storageVal) return column;
    auto spread = MakeRef<Column>(SpreadProperties(*column), MakeRef<TempFileDataStream>(), column->GetDict());
    m_spreads.push_back({expression, spread});
    return spread;
}

RefCntPtr<Column> Project::LookupColumn(const std::wstring& name) const {
    const RefCntPtr<Exp> expression = Find(name);
    if (!expression) return DataFlow::LookupColumn(name);
    const RefCntPtr<Column> column = expression->AllocateColumn(m_source.get());
    if (column->GetStorageName() != Column::storageVal) return column;
    return MakeRef<Column>(SpreadProperties(*column));
}

}  // namespace qve
