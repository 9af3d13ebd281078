#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "algebra/DataFlow.h"
#include "algebra/LeafTable.h"
#include "algebra/Scan.h"
#include "storage/Column.h"
#include "system/QuillonException.h"

namespace qve {

/// What random columns are to look like.
struct SampleOptions {
    unsigned distinct = 10;  ///< different values
    double nulls = 0;        ///< share of nulls
    bool nan = false;        ///< among floating-point values: NaN, infinities, both zeros
    unsigned spread = 1;     ///< distance of neighbouring integers
};

/// The atom types by name, and "text".
const std::vector<std::wstring>& SampleTypes();

/// A column `name` of `rows` random values of one of the types.
RefCntPtr<Column> SampleColumn(const std::wstring& type, const std::wstring& name, unsigned rows,
                               const SampleOptions& options, std::mt19937& random);
/// The column of these values of a type, from their text form; "NULL" is a null.
RefCntPtr<Column> ColumnOf(const std::wstring& type, const std::wstring& name, const std::vector<std::string>& values);

/// A table that stands in no catalog.
RefCntPtr<LeafTable> TableOf(const std::vector<RefCntPtr<Column>>& columns);

/// The cells of a column as text, row by row.
std::vector<std::string> Cells(Column& column);
/// The cells of all the columns `names` of a built table, row by row.
std::vector<std::vector<std::string>> Rows(const Table& table, const std::vector<std::wstring>& names);

/// Pages with a selection: of each row of the source the flow selects it or not, by a share from 0 to 1; with 1 the
/// selection is null. Now and then a page has no selected row.
class SampleSelect : public DataFlow {
public:
    SampleSelect(RefCntPtr<Table> table, double share, unsigned seed);
    void Accept(OperatorVisitor&) override {}
    unsigned Next(unsigned pageSize) override;
    void ResetCursor() override;

    /// The rows of the table that were selected so far.
    const std::vector<uint64_t>& GetSelected() const { return m_selected; }
    /// Cancels the scan below.
    void Cancel() { static_cast<Scan&>(*m_source).SetCancelled(); }

private:
    const double m_share;
    const unsigned m_seed;
    std::vector<unsigned> m_rows;
    std::vector<uint64_t> m_selected;
};

/// The number of the exception that `action` throws; 0 when it throws none.
template <class F>
int StatusOf(F action) {
    try {
        action();
    } catch (const QuillonException& fault) {
        return fault.GetStatus();
    }
    return 0;
}

}  // namespace qve
