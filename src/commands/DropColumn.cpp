#include "commands/DropColumn.h"

#include "algebra/OperatorVisitor.h"
#include "metrics/Scope.h"

namespace qve {

DropColumn::DropColumn(RefCntPtr<Database> database, std::wstring schema, std::wstring table, std::wstring name,
                       bool cascade, bool ifexists)
    : m_database(std::move(database)),
      m_schema(std::move(schema)),
      m_table(std::move(table)),
      m_name(std::move(name)),
      m_cascade(cascade),
      m_ifexists(ifexists) {}

void DropColumn::Accept(OperatorVisitor& visitor) {
    visitor.VisitDropColumn(*this);
}

RefCntPtr<Namespace> DropColumn::Execute(unsigned) {
    Metrics::Scope scope("DropColumn::Execute");
    m_database->DropColumn(m_name, m_table, m_schema, m_cascade, m_ifexists);
    return nullptr;
}

}  // namespace qve
