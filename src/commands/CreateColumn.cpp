#include "commands/CreateColumn.h"

#include <algorithm>

#include "algebra/FlowTable.h"
#include "algebra/LeafTable.h"
#include "algebra/OperatorProgressCallback.h"
#include "algebra/OperatorVisitor.h"
#include "algebra/ProgressCallbackImpl.h"
#include "algebra/Save.h"
#include "algebra/Scan.h"
#include "commands/ValueGenerator.h"
#include "commands/status.h"
#include "metrics/Scope.h"
#include "storage/Column.h"
#include "storage/Database.h"
#include "storage/stream/TempFileDataStream.h"
#include "system/QuillonException.h"
#include "system/unicode.h"
#include "telemetry/LogEntry.h"
#include "types/complete_type.h"
#include "vql/syntax/VQLIdentifier.h"

namespace qve {

namespace {

constexpr unsigned block = 65536;  // rows that are made between two looks at a cancel

[[noreturn]] void Raise(int status, const char* text) {
    throw QVE_RuntimeError(status, text);
}

/// What stays with the column of what the statement says.
usrprops Described(const std::wstring& name, const usrprops& given) {
    usrprops properties = given;
    for (const usrpropkey key :
         {CreateColumn::propComputedBy, CreateColumn::propGeneratedBy, CreateColumn::propSeed, CreateColumn::propCount,
          usrpropkey::min_value, usrpropkey::max_value, usrpropkey::cardinality}) {
        properties.erase(key);
    }
    properties += complete_type(given);
    if (!properties.is_true(usrpropkey::fixed)) {
        properties.set(usrpropkey::compression, L"heap");
        properties.set(usrpropkey::storagewidth, L"8");
    }
    properties.set(usrpropkey::name, name);
    return properties;
}

}  // namespace

CreateColumn::CreateColumn(RefCntPtr<Database> database, std::wstring schema, std::wstring table, std::wstring column,
                           usrprops properties, RefCntPtr<Namespace> plan)
    : m_database(std::move(database)),
      m_schema(std::move(schema)),
      m_table(std::move(table)),
      m_column(std::move(column)),
      m_properties(std::move(properties)),
      m_plan(std::move(plan)),
      m_progress(MakeRef<ProgressCallbackImpl>()) {
    if (!m_database->HasSchema(m_schema)) Raise(status::CreateColumn_target, "CreateColumn: No such schema.");
    const std::vector<std::wstring> tables = m_database->GetTableNames(m_schema);
    if (std::find(tables.begin(), tables.end(), m_table) == tables.end()) {
        Raise(status::CreateColumn_target, "CreateColumn: No such table.");
    }
}

CreateColumn::~CreateColumn() = default;

std::wstring CreateColumn::BuildComputedByQuery(const std::wstring& schema, const std::wstring& table,
                                                const std::wstring& column, const usrprops& properties) {
    const auto quote = [](const std::wstring& name) { return VQLIdentifier::UnquotedName(name); };
    return L"(restrict (project (table " + quote(schema) + L"." + quote(table) + L") ((" + quote(column) + L" " +
           std::wstring(properties.text(propComputedBy)) + L"))) (" + quote(column) + L"))";
}

void CreateColumn::Accept(OperatorVisitor& visitor) {
    visitor.VisitCreateColumn(*this);
}

uint64_t CreateColumn::CountRows(bool& first) const {
    const std::vector<std::wstring> columns = m_database->GetColumnNames(m_table, m_schema);
    first = columns.empty();
    if (!first) return m_database->LoadColumn(columns.front(), m_table, m_schema)->GetCount();
    const long long count = m_properties.number(propCount, 0);
    if (count < 0) Raise(status::CreateColumn_count, "CreateColumn: count below 0");
    return static_cast<uint64_t>(count);
}

void CreateColumn::Fill(Column& column, uint64_t rows) const {
    const std::wstring_view mode = m_properties.text(propGeneratedBy);
    std::unique_ptr<ValueGenerator> generator;
    if (mode == generateConstant) {
        if (!m_properties.has(usrpropkey::default_value)) {
            Raise(status::CreateColumn_default, "GenerateConstantColumn: no default-value");
        }
        if (column.GetDefaultAtom().isnull()) {
            Raise(status::CreateColumn_default, "GenerateConstantColumn: default-value is no value of the type");
        }
    } else if (!mode.empty()) {
        const auto seed = static_cast<uint64_t>(m_properties.number(propSeed, 0));
        generator = ValueGenerator::Make(m_properties, *column.GetType(), seed);
    }
    while (rows > 0) {
        OperatorProgressCallback::Check(m_progress.get());
        const auto count = static_cast<unsigned>(std::min<uint64_t>(rows, block));
        if (generator) {
            generator->Next(count, column);
        } else {
            column.Append(count, false);
        }
        rows -= count;
    }
}

RefCntPtr<Table> CreateColumn::GenerateColumn(uint64_t rows) const {
    const Metrics::Scope scope("GenerateRandomColumn");
    usrprops properties = Described(m_column, m_properties);
    RefCntPtr<DataStream> dictionary;
    if (properties.has(usrpropkey::compression)) dictionary = MakeRef<TempFileDataStream>();
    auto column = MakeRef<Column>(std::move(properties), MakeRef<TempFileDataStream>(), std::move(dictionary));
    Fill(*column, rows);
    ColumnMap columns;
    columns.emplace(m_column, std::move(column));
    return MakeRef<LeafTable>(m_table, std::move(columns));
}

RefCntPtr<Namespace> CreateColumn::Execute(unsigned pageSize) {
    LogEntry() << "CreateColumn::Execute( m_column=\"" << m_column << "\", m_table=\"" << m_table << "\", m_schema=\""
               << m_schema << "\"):";
    Database::Transaction transaction(*m_database);
    bool first = false;
    const uint64_t rows = CountRows(first);
    RefCntPtr<DataFlow> flow;
    if (m_plan) {
        flow = DynamicPtrCast<DataFlow>(m_plan->Execute(pageSize));
        if (!flow) throw QVE_LogicError(status::CreateColumn_plan, "CreateColumn: no rows");
    } else {
        flow = MakeRef<Scan>(GenerateColumn(rows));
    }
    const auto made = MakeRef<FlowTable>(std::move(flow), FlowTable::anyEncoding, ColumnWriter::Purpose::storage);
    made->SetProgressCallback(m_progress);
    made->Build(std::max(pageSize, block));
    if (!first && made->GetCount() != rows) {
        Raise(status::CreateColumn_count, "CreateColumn: the values are not as many as the table has rows");
    }
    usrprops described = m_plan ? made->DescribeColumn(m_column)->GetProperties() : Described(m_column, m_properties);
    // Behind the columns that are there.
    described.erase(usrpropkey::ordinal);
    m_database->CreateColumn(m_column, m_table, m_schema, described);
    Save save(made, m_database, m_schema, m_table);
    save.SetProgressCallback(m_progress);
    save.Build(pageSize);
    transaction.Commit();
    return nullptr;
}

}  // namespace qve
