#include "algebra/Save.h"

#include <algorithm>

#include "algebra/OperatorProgressCallback.h"
#include "storage/Column.h"
#include "storage/Database.h"
#include "storage/stream/TempFileDataStream.h"
#include "system/CancelScope.h"
#include "telemetry/LogScopeTime.h"

namespace qve {

Save::Save(RefCntPtr<Table> delegate, RefCntPtr<Database> database, std::wstring schema, std::wstring table)
    : DelegatedTable(std::move(delegate)),
      m_database(std::move(database)),
      m_schema(std::move(schema)),
      m_table(std::move(table)) {}

Save::~Save() = default;

uint64_t Save::Build(unsigned pageSize) {
    if (m_built) return m_count;
    const CancelScope cancel(m_progress.get());
    LogScopeTime time("Save::Build", 1.0);
    m_count = m_delegate->Build(pageSize);
    time.SetNumber(m_count);

    Database::Transaction transaction(*m_database);
    const std::vector<std::wstring> stored = m_database->GetColumnNames(m_table, m_schema);
    for (const RefCntPtr<Column>& column : ColumnsInOrder()) {
        OperatorProgressCallback::Check(m_progress.get());
        const std::wstring& name = column->GetName();
        if (std::find(stored.begin(), stored.end(), name) == stored.end()) {
            m_database->CreateColumn(name, m_table, m_schema, column->GetProperties());
        }
        // Tokens as narrow as the dictionary allows: less to store, and a byte or two can number groups directly.
        column->MinimiseTokens(MakeRef<TempFileDataStream>());
        m_database->ReplaceColumn(name, m_table, m_schema, *column);
    }
    OperatorProgressCallback::Check(m_progress.get());
    transaction.Commit();
    m_built = true;
    return m_count;
}

// The catalog lists columns in the order of their making.
std::vector<RefCntPtr<Column>> Save::ColumnsInOrder() const {
    std::vector<RefCntPtr<Column>> columns;
    for (const std::wstring& name : m_delegate->GetColumnNames()) columns.push_back(m_delegate->GetColumn(name));
    std::stable_sort(columns.begin(), columns.end(), [](const auto& a, const auto& b) {
        return a->GetSizeProperty(usrpropkey::ordinal) < b->GetSizeProperty(usrpropkey::ordinal);
    });
    return columns;
}

void Save::ReleaseDelegate() {
    m_delegate.reset();
}

}  // namespace qve
