#include "commands/CreateTable.h"

#include "algebra/OperatorVisitor.h"
#include "metrics/Scope.h"

namespace qve {

CreateTable::CreateTable(RefCntPtr<Database> database, std::wstring schema, std::wstring name,
                         std::vector<ColumnDefinition> columns)
    : m_database(std::move(database)),
      m_schema(std::move(schema)),
      m_name(std::move(name)),
      m_columns(std::move(columns)) {}

void CreateTable::Accept(OperatorVisitor& visitor) {
    visitor.VisitCreateTable(*this);
}

RefCntPtr<Namespace> CreateTable::Execute(unsigned) {
    Metrics::Scope scope("CreateTable::Execute");
    Database::Transaction transaction(*m_database);
    m_database->CreateTable(m_name, m_schema);
    for (const auto& [column, properties] : m_columns) {
        m_database->CreateColumn(column, m_name, m_schema, properties);
    }
    transaction.Commit();
    return nullptr;
}

}  // namespace qve
