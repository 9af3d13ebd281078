#pragma once

#include <string>

#include "commands/Statement.h"
#include "system/ProgressCallback.h"
#include "types/usrprops.h"

namespace qve {

class Column;
class Database;
class Table;

/// Adds a column to a table, with a value for each row: computed by an expression over the other columns, generated, or
/// the default value. Either all of it is made or nothing.
class CreateColumn : public Statement {
public:
    static constexpr usrpropkey propComputedBy = usrpropkey::computed_by;    ///< "computed-by": an expression
    static constexpr usrpropkey propGeneratedBy = usrpropkey::generated_by;  ///< "generated-by": one of the modes below
    static constexpr usrpropkey propSeed = usrpropkey::seed;                 ///< "seed": of random values
    static constexpr usrpropkey propCount = usrpropkey::count;  ///< "count": rows, for the first column of a table
    static constexpr std::wstring_view generateConstant = L"constant";
    static constexpr std::wstring_view generateAffine = L"affine";
    static constexpr std::wstring_view generateRandom = L"random";

    /// `properties` describe the column: `type`, `default-value`, and how its values are made. `plan` is that of
    /// BuildComputedByQuery, null without the property `computed-by`. Throws QVE_RuntimeError
    /// (status::CreateColumn_target) "CreateColumn: No such schema." and "CreateColumn: No such table.".
    CreateColumn(RefCntPtr<Database> database, std::wstring schema, std::wstring table, std::wstring column,
                 usrprops properties, RefCntPtr<Namespace> plan = nullptr);
    ~CreateColumn() override;

    /// A query whose only column is the new one, computed by the property `computed-by` from the rows of the table.
    static std::wstring BuildComputedByQuery(const std::wstring& schema, const std::wstring& table,
                                             const std::wstring& column, const usrprops& properties);

    void Accept(OperatorVisitor& visitor) override;
    RefCntPtr<Namespace> Execute(unsigned pageSize) override;

    const std::wstring& GetName() const { return m_column; }
    /// Null when nothing is computed.
    const RefCntPtr<Namespace>& GetPlan() const { return m_plan; }
    const RefCntPtr<ProgressCallback>& GetProgressCallback() const { return m_progress; }

private:
    /// The rows that the column has to have; `first` when it is the first of its table.
    uint64_t CountRows(bool& first) const;
    RefCntPtr<Table> GenerateColumn(uint64_t rows) const;
    void Fill(Column& column, uint64_t rows) const;

    const RefCntPtr<Database> m_database;
    const std::wstring m_schema;
    const std::wstring m_table;
    const std::wstring m_column;
    const usrprops m_properties;
    const RefCntPtr<Namespace> m_plan;
    const RefCntPtr<ProgressCallback> m_progress;
};

}  // namespace qve
