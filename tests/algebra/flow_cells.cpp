#include "tests/algebra/flow_cells.h"

#include <sstream>

#include "algebra/ConstantExp.h"
#include "storage/Column.h"
#include "tests/algebra/sample_rows.h"

namespace qve {

namespace {

std::string CellText(const Column& column, const input_column& cells, unsigned row) {
    usratom value(column.GetType());
    column.GetType()->get(cells, column.GetStorageName() == Column::storageVal ? 0 : row, value);
    std::ostringstream text;
    column.GetType()->tostream(text, value);
    return text.str();
}

}  // namespace

std::vector<std::vector<std::string>> NextRows(DataFlow& flow, const std::vector<std::wstring>& names,
                                               unsigned pageSize) {
    std::vector<std::vector<std::string>> rows;
    const unsigned extent = flow.Next(pageSize);
    EXPECT_LE(extent, pageSize);
    EXPECT_LE(flow.GetSelectionCount(), extent);
    for (unsigned k = 0; k < flow.GetSelectionCount(); ++k) {
        const unsigned row = flow.GetSelection() ? flow.GetSelection()[k] : k;
        std::vector<std::string> cells;
        for (const std::wstring& name : names) {
            const Column& column = *flow.GetColumn(name);
            EXPECT_GE(column.GetInput(0).count, extent);
            cells.push_back(CellText(column, column.GetInput(0), row));
        }
        rows.push_back(std::move(cells));
    }
    return rows;
}

std::vector<std::vector<std::string>> Drain(DataFlow& flow, const std::vector<std::wstring>& names, unsigned pageSize) {
    std::vector<std::vector<std::string>> rows;
    do {
        auto page = NextRows(flow, names, pageSize);
        rows.insert(rows.end(), std::make_move_iterator(page.begin()), std::make_move_iterator(page.end()));
    } while (flow.GetExtent() > 0);
    EXPECT_EQ(flow.Next(pageSize), 0u);
    EXPECT_EQ(flow.GetExtent(), 0u);
    EXPECT_EQ(flow.GetSelectionCount(), 0u);
    return rows;
}

std::vector<std::string> PageCells(const Exp& exp, const std::vector<unsigned>& rows) {
    std::vector<std::string> cells;
    for (const unsigned row : rows) cells.push_back(CellText(*exp.GetColumn(), exp.GetResult(), row));
    return cells;
}

usratom Atom(const std::wstring& type, const std::string& value) {
    const RefCntPtr<Column> column = ColumnOf(type, L"literal", {value});
    usratom view;
    column->GetType()->get(column->GetInput(0), 0, view);
    usratom atom(column->GetType());
    if (!view.isnull()) atom.assign(column->GetType(), view.data(), view.length());
    return atom;
}

RefCntPtr<Exp> Literal(const std::wstring& type, const std::string& value) {
    return MakeRef<ConstantExp>(Atom(type, value));
}

CountingExp::CountingExp(RefCntPtr<Exp> argument) : Exp(Arguments{std::move(argument)}) {
    m_column = m_arguments[0]->GetColumn();
}

RefCntPtr<Column> CountingExp::AllocateColumn(const Namespace* input) {
    m_column = m_arguments[0]->AllocateColumn(input);
    m_isConstant = m_arguments[0]->IsConstant();
    return m_column;
}

void CountingExp::Evaluate(unsigned count, unsigned extent, const unsigned* sel, const Namespace* input) {
    ++calls;
    rows += count;
    m_arguments[0]->Evaluate(count, extent, sel, input);
}

}  // namespace qve
