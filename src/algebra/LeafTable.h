#pragma once

#include <string>

#include "algebra/Table.h"
#include "types/usrprops.h"

namespace qve {

class Database;
class DatabaseSchema;

/// A table of the catalog. Its columns are loaded when they are first asked for. Besides the listed columns every leaf
/// table has the reserved column ".RANK", the row number.
class LeafTable : public Table {
public:
    /// The table `name` of `schema`, which `database` owns and is held for, with the columns `names`.
    LeafTable(RefCntPtr<Database> database, DatabaseSchema& schema, std::wstring name, const ColumnNames& names);
    /// The same with all columns of the table.
    LeafTable(RefCntPtr<Database> database, DatabaseSchema& schema, std::wstring name);
    /// A table that stands in no catalog: complete columns under their names.
    LeafTable(std::wstring name, ColumnMap columns);
    ~LeafTable() override;

    void Accept(OperatorVisitor& visitor) override;
    ColumnNames GetColumnNames() const override;
    bool HasColumn(const std::wstring& name) const override;
    /// Raises 40240.
    RefCntPtr<Column> GetColumn(const std::wstring& name) const override;
    unsigned GetColumnCount() const override;
    /// The catalog's description; loads no data. Raises 40239.
    RefCntPtr<Column> DescribeColumn(const std::wstring& name) const override;

    uint64_t GetStart() const override;
    uint64_t GetCount() const override;
    /// Takes the count of the first column; a table without columns has no rows.
    uint64_t Build(unsigned pageSize) override;

    const std::wstring& GetName() const { return m_name; }
    /// Null for a table that stands in no catalog.
    const DatabaseSchema* GetSchema() const { return m_schema; }
    const RefCntPtr<Database>& GetDatabase() const { return m_database; }

    /// The properties of a ".RANK" column.
    static usrprops RankProperies();

private:
    static constexpr uint64_t unset = ~uint64_t{0};

    const RefCntPtr<Database> m_database;
    DatabaseSchema* const m_schema;
    const std::wstring m_name;
    mutable ColumnMap m_columns;
    mutable RefCntPtr<Column> m_rank;
    const uint64_t m_start = 0;
    uint64_t m_count = unset;
};

}  // namespace qve
