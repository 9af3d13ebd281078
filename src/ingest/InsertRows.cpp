#include "ingest/InsertRows.h"

#include <algorithm>

#include "algebra/Append.h"
#include "algebra/ConstantExp.h"
#include "algebra/FlowTable.h"
#include "algebra/LeafTable.h"
#include "algebra/Project.h"
#include "algebra/Save.h"
#include "algebra/Scan.h"
#include "ingest/TextScan.h"
#include "ingest/status.h"
#include "metrics/Scope.h"
#include "storage/Column.h"
#include "storage/Database.h"
#include "storage/DatabaseSchema.h"
#include "system/QuillonException.h"
#include "system/unicode.h"
#include "types/builtin.h"

namespace qve {

namespace {

// Columns are written in parallel page by page, so an insert takes more rows at a time than a query does.
constexpr unsigned insertPageSize = 16384;

/// The type of the values that a stored column can take: integers are stored as narrow as the present ones allow.
usrprops WidestType(const usrprops& stored) {
    switch (usrtype::resolve(stored)->GetDataType()) {
        case DataType::integer:
            return builtin::primitive_props(L"bigint");
        case DataType::index:
            return builtin::primitive_props(L"oid");
        default:
            return usrtype::resolve(stored)->properties();
    }
}

}  // namespace

InsertRows::InsertRows(RefCntPtr<Database> database, std::wstring schema, std::wstring table)
    : m_database(std::move(database)), m_schema(std::move(schema)), m_table(std::move(table)) {
    if (!m_database->HasSchema(m_schema)) {
        throw QVE_RangeError(status::InsertRows_column, "Insert: No such schema: " + narrow(m_schema));
    }
    m_database->GetSchema(m_schema)->GetTable(m_table);
}

InsertRows::~InsertRows() = default;

std::vector<usrprops> InsertRows::DescribeColumns(const std::vector<std::wstring>& names) const {
    const std::vector<std::wstring> stored = m_database->GetColumnNames(m_table, m_schema);
    const std::vector<std::wstring>& wanted = names.empty() ? stored : names;
    std::vector<usrprops> columns;
    for (auto name = wanted.begin(); name != wanted.end(); ++name) {
        if (std::find(stored.begin(), stored.end(), *name) == stored.end() ||
            std::find(wanted.begin(), name, *name) != name) {
            throw QVE_RangeError(status::InsertRows_column, "Insert: Unknown column name: " + narrow(*name));
        }
        usrprops properties = WidestType(m_database->DescribeColumn(*name, m_table, m_schema));
        properties.set(usrpropkey::name, *name);
        properties.set(usrpropkey::ordinal, columns.size());
        columns.push_back(std::move(properties));
    }
    if (columns.empty()) {
        throw QVE_RangeError(status::InsertRows_column, "Insert: the table has no columns: " + narrow(m_table));
    }
    return columns;
}

RefCntPtr<DataFlow> InsertRows::BuildTextFlow(const std::wstring& path, const std::vector<std::wstring>& names) const {
    std::vector<usrprops> columns = DescribeColumns(names);
    // What the text holds is found out first; a scan that is told its columns would not say that there are fewer.
    const TextScan probe(TextScan::OpenFile(path), {}, {});
    if (probe.GetSchema().size() < columns.size()) {
        throw QVE_RuntimeError(status::InsertRows_text,
                               "Insert::BuildTextFlow: Not enough text columns: the text has " +
                                   std::to_string(probe.GetSchema().size()) + ", the insert " +
                                   std::to_string(columns.size()));
    }
    ColumnNames wanted;
    for (const usrprops& column : columns) wanted.insert(*column.get(usrpropkey::name));
    return MakeRef<TextScan>(TextScan::OpenFile(path), std::move(columns), probe.GetTextProperties(), wanted);
}

RefCntPtr<DataFlow> InsertRows::PadFlow(RefCntPtr<DataFlow> rows, const ColumnNames& names) const {
    std::vector<RefCntPtr<Exp>> missing;
    for (const std::wstring& name : names) {
        if (rows->HasColumn(name)) continue;
        const Column described(m_database->DescribeColumn(name, m_table, m_schema));
        missing.push_back(MakeRef<ConstantExp>(name, described.GetDefaultAtom()));
    }
    return missing.empty() ? rows : MakeRef<Project>(std::move(rows), std::move(missing));
}

void InsertRows::Execute(RefCntPtr<DataFlow> rows, unsigned pageSize, const RefCntPtr<ProgressCallback>& progress) {
    Metrics::Scope scope("Insert::Execute");
    // Whoever else writes to the table waits meanwhile: what they would add between reading and writing would be lost.
    Database::Transaction transaction(*m_database);
    const auto stored = MakeRef<LeafTable>(*m_database->GetSchema(m_schema), m_table);
    RefCntPtr<DataFlow> added = PadFlow(std::move(rows), stored->GetColumnNames());
    auto append =
        MakeRef<Append>(MakeRef<Scan>(stored), std::vector{std::move(added)}, std::vector<Append::Renames>(1));
    const auto table = MakeRef<FlowTable>(std::move(append), FlowTable::anyEncoding, ColumnWriter::Purpose::storage);
    table->SetProgressCallback(progress);
    table->Build(std::max(pageSize, insertPageSize));
    Save save(table, m_database, m_schema, m_table);
    save.SetProgressCallback(progress);
    save.Build(pageSize);
    transaction.Commit();
}

}  // namespace qve
