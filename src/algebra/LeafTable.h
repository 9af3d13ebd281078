#pragma once

#include <atomic>
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
    /// The columns `names` of the table `name`. The schema is its database's own handle; the database is held.
    LeafTable(DatabaseSchema& schema, std::wstring name, const ColumnNames& names);
    /// All columns of the table.
    LeafTable(DatabaseSchema& schema, std::wstring name);
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
    /// 0 before Build. Any thread may ask.
    uint64_t GetCount() const override;
    /// Takes the count of the first column, of the catalog's when none was asked for; a table without columns has no
    /// rows.
    uint64_t Build(unsigned pageSize) override;

    /// Whether GetCount() is known. Any thread may ask.
    bool IsCounted() const { return m_count.load(std::memory_order_relaxed) != unset; }

    const std::wstring& GetName() const { return m_name; }
    /// Null for a table that stands in no catalog.
    DatabaseSchema* GetSchema() const { return m_schema; }

    /// The properties of a ".RANK" column.
    static usrprops RankProperies();

private:
    uint64_t CountRows() const;

    static constexpr uint64_t unset = ~uint64_t{0};

    const RefCntPtr<Database> m_database;
    DatabaseSchema* const m_schema;
    const std::wstring m_name;
    mutable ColumnMap m_columns;
    mutable RefCntPtr<Column> m_rank;
    const uint64_t m_start = 0;
    // Progress is asked for by other threads.
    mutable std::atomic<uint64_t> m_count{unset};
};

}  // namespace qve
