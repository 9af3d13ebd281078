#include "commands/CreateTableFromFlow.h"

#include <algorithm>

#include "algebra/DataFlow.h"
#include "algebra/FlowTable.h"
#include "algebra/ProgressCallbackImpl.h"
#include "algebra/Save.h"
#include "commands/status.h"
#include "metrics/Scope.h"
#include "system/QuillonException.h"
#include "system/unicode.h"
#include "telemetry/LogScopeTime.h"

namespace qve {
namespace {

// Columns are parsed and encoded in parallel page by page, so a load takes more rows at a time than a query does.
constexpr unsigned load_page_size = 16384;

}  // namespace

CreateTableFromFlow::CreateTableFromFlow(RefCntPtr<Database> database, std::wstring schema, std::wstring name,
                                         RefCntPtr<Namespace> plan)
    : CreateTable(std::move(database), std::move(schema), std::move(name)),
      m_plan(std::move(plan)),
      m_progress(MakeRef<ProgressCallbackImpl>()) {}

// A name that is taken is said before the work, not after it; making the table looks again.
void CreateTableFromFlow::CheckName() const {
    const std::vector<std::wstring> tables = m_database->GetTableNames(m_schema);
    if (std::find(tables.begin(), tables.end(), m_name) != tables.end()) {
        throw QVE_RuntimeError(status::CreateTableFromFlow_exists,
                               "CreateTableFromFlow: table exists: " + narrow(m_schema) + "." + narrow(m_name));
    }
}

void CreateTableFromFlow::MakeEmpty() {
    m_database->CreateTable(m_name, m_schema);
}

RefCntPtr<Namespace> CreateTableFromFlow::Execute(unsigned pageSize) {
    Metrics::Scope scope("CreateTableFromFlow::Execute");
    LogScopeTime time("CreateTableFromFlow::Execute");
    CheckName();
    const RefCntPtr<Namespace> result = m_plan->Execute(pageSize);
    auto table = DynamicPtrCast<Table>(result);
    if (!table) {
        auto flow = DynamicPtrCast<DataFlow>(result);
        if (!flow) throw QVE_LogicError(status::CreateTableFromFlow_plan, "CreateTableFromFlow: no rows");
        auto rows = MakeRef<FlowTable>(std::move(flow), FlowTable::anyEncoding, ColumnWriter::Purpose::storage);
        rows->SetProgressCallback(m_progress);
        table = std::move(rows);
    }
    table->Build(std::max(pageSize, load_page_size));

    Database::Transaction transaction(*m_database);
    MakeEmpty();
    Save save(table, m_database, m_schema, m_name);
    save.SetProgressCallback(m_progress);
    save.Build(pageSize);
    transaction.Commit();
    return nullptr;
}

void CreateTableFromFlow::Do(RefCntPtr<Database> database, const std::wstring& schema, const std::wstring& name,
                             RefCntPtr<Namespace> plan) {
    MakeRef<CreateTableFromFlow>(std::move(database), schema, name, std::move(plan))->Execute(Namespace::s_blockLength);
}

}  // namespace qve
