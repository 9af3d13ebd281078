#pragma once

#include <memory>
#include <string>
#include <vector>

#include "algebra/Exp.h"
#include "algebra/SumOfProducts.h"
#include "algebra/TokenMemo.h"
#include "types/usratom.h"

namespace qve {

class Join;
class Table;

/// A value found in a table by keys: for each row the value of the table's first row with equal keys, where a null key
/// equals a null. What the table's keys allow decides how rows are found: by position where they are dense, else by
/// hash.
class LookupExp : public Exp {
public:
    /// The property "ordinal" of the table's columns says what they are: of column i of `keys`, the key with that
    /// number; of one more column the value, with the number of keys. Raises 40243 for a column with another ordinal,
    /// or none, and 40244 when one of these columns is missing or there twice. Rows that are not found get `otherwise`,
    /// a value of the table's column, or null when it has no type.
    LookupExp(const std::wstring& name, Arguments keys, RefCntPtr<Table> table, usratom otherwise = {});
    ~LookupExp() override;

    void Accept(ExpVisitor& visitor) override;
    /// Builds the table.
    RefCntPtr<Column> AllocateColumn(const Namespace* input) override;
    void Evaluate(unsigned count, unsigned extent, const unsigned* sel, const Namespace* input) override;

    const RefCntPtr<Table>& GetTable() const { return m_table; }
    /// The columns of the table by ordinal: the keys, then the value.
    const std::vector<std::wstring>& GetTableColumns() const { return m_tableColumns; }
    const usratom& GetOtherwise() const { return m_otherwise; }

    /// The rows of a table for a condition on `columns` that lists the values they may have.
    static SumOfProducts ExtractSumOfProducts(Exp& condition, const std::vector<std::wstring>& columns) {
        return SumOfProducts::Extract(condition, columns);
    }

private:
    class ExpFlow;
    class Probe;

    /// Finds the values of the given rows.
    void Find(unsigned count, unsigned extent, const unsigned* sel, output_column out);

    const RefCntPtr<Table> m_table;
    const usratom m_otherwise;
    std::vector<std::wstring> m_tableColumns;
    RefCntPtr<ExpFlow> m_flow;
    RefCntPtr<Probe> m_probe;
    RefCntPtr<Column> m_value;          // the page that the probe makes
    std::unique_ptr<TokenMemo> m_memo;  // of one dictionary column as key: what was found for each token
    bool m_single = false;              // one value for all rows
};

/// Makes the table of a LookupExp in memory.
class LookupTable {
public:
    /// With the types of the keys, and of the value.
    LookupTable(const std::vector<const usrtype*>& keys, const usrtype* value);
    ~LookupTable();

    /// Adds a row: the keys and the value, each of the type of its column or a null.
    void Add(const std::vector<usratom>& cells);
    RefCntPtr<Table> Finish();

private:
    std::vector<RefCntPtr<Column>> m_columns;
};

}  // namespace qve
