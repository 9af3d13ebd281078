#include "algebra/FlowTable.h"

#include <gtest/gtest.h>

#include <random>

#include "algebra/ColumnExp.h"
#include "algebra/Project.h"
#include "algebra/Scan.h"
#include "algebra/Select.h"
#include "algebra/SelectExp.h"
#include "algebra/status.h"
#include "storage/stream/TempFileDataStream.h"
#include "system/QuillonException.h"
#include "tests/algebra/flow_cells.h"
#include "tests/algebra/sample_rows.h"

namespace qve {
namespace {

TEST(FlowTableTest, HoldsTheSelectedRowsOfEveryType) {
    std::mt19937 random(11);
    std::vector<RefCntPtr<Column>> columns;
    std::vector<std::wstring> names;
    for (const std::wstring& type : SampleTypes()) {
        names.push_back(L"c_" + type);
        columns.push_back(SampleColumn(type, names.back(), 3000, {.distinct = 200, .nulls = 0.1}, random));
    }
    const auto source = TableOf(columns);
    source->Build(1);
    const auto rows = Rows(*source, names);
    for (const double share : {1.0, 0.4, 0.0}) {
        for (const unsigned pageSize : {7u, 1024u}) {
            const auto flow = MakeRef<SampleSelect>(source, share, 5);
            FlowTable table(flow);
            EXPECT_EQ(table.GetColumn(names[0])->GetCount(), 0u);
            const uint64_t count = table.Build(pageSize);
            ASSERT_EQ(count, flow->GetSelected().size());
            const auto drained = Rows(table, names);
            for (size_t row = 0; row < count; ++row) ASSERT_EQ(drained[row], rows[flow->GetSelected()[row]]);
            EXPECT_EQ(table.Build(pageSize), count);  // a second build does nothing
        }
    }
}

TEST(FlowTableTest, EmptyFlowGivesEmptyColumns) {
    FlowTable table(MakeRef<Scan>(TableOf({ColumnOf(L"long", L"a", {}), ColumnOf(L"text", L"t", {})})));
    EXPECT_EQ(table.Build(1024), 0u);
    EXPECT_EQ(table.GetColumn(L"a")->GetCount(), 0u);
    EXPECT_EQ(table.GetColumn(L"t")->GetCount(), 0u);
    EXPECT_EQ(StatusOf([&] { table.GetColumn(L"x"); }), 40182);
    EXPECT_EQ(StatusOf([&] { table.LoadColumn(L"x"); }), 40183);
    EXPECT_EQ(StatusOf([&] { table.LookupColumn(L"x"); }), status::FlowTable_LookupColumn);
    EXPECT_EQ(StatusOf([&] { table.DescribeColumn(L"x"); }), status::FlowTable_DescribeColumn);
}

TEST(FlowTableTest, DescribingLoadsNothing) {
    FlowTable table(MakeRef<Scan>(TableOf({ColumnOf(L"long", L"a", {"1"})})));
    EXPECT_EQ(table.DescribeColumn(L"a")->GetType()->name(), L"long");
    EXPECT_EQ(table.GetCount(), 0u);
}

TEST(FlowTableTest, EncodesAndRemembersBounds) {
    std::vector<std::string> values;
    for (unsigned row = 0; row < 70000; ++row) values.push_back(std::to_string(row / 1000));
    const auto source = TableOf({ColumnOf(L"bigint", L"a", values)});
    FlowTable encoded(MakeRef<Scan>(source));
    FlowTable plain(MakeRef<Scan>(source), 0);
    EXPECT_EQ(encoded.Build(1024), 70000u);
    EXPECT_EQ(plain.Build(1024), 70000u);
    EXPECT_TRUE(encoded.GetColumn(L"a")->HasProperty(usrpropkey::encoding));
    EXPECT_FALSE(plain.GetColumn(L"a")->HasProperty(usrpropkey::encoding));
    EXPECT_EQ(encoded.GetColumn(L"a")->GetProperty(usrpropkey::max_value), L"69");
    Scan scan(MakeRef<FlowTable>(MakeRef<Scan>(source)));
    const auto cells = Drain(scan, {L"a"}, 1000);
    ASSERT_EQ(cells.size(), values.size());
    for (size_t row = 0; row < values.size(); row += 997) EXPECT_EQ(cells[row][0], values[row]);
}

TEST(FlowTableTest, TokensOfOneDictionaryAreCopied) {
    const auto source = TableOf({ColumnOf(L"text", L"t", {"a", "b", "NULL", "a"})});
    FlowTable table(MakeRef<Scan>(source));
    table.Build(2);
    EXPECT_EQ(table.GetColumn(L"t")->GetDict(), source->GetColumn(L"t")->GetDict());
    EXPECT_EQ(Cells(*table.GetColumn(L"t")), (std::vector<std::string>{"'a'", "'b'", "NULL", "'a'"}));
}

TEST(FlowTableTest, WhatGoesToADatabaseLeavesUnusedTextsBehind) {
    std::vector<std::string> values;
    for (unsigned row = 0; row < 20000; ++row) values.push_back(row % 50 ? "value " + std::to_string(row) : "NULL");
    // Two columns of one dictionary, and one with its own.
    const RefCntPtr<Column> text = ColumnOf(L"text", L"t", values);
    usrprops properties = text->GetProperties();
    properties.set(usrpropkey::name, L"u");
    const auto twin = MakeRef<Column>(properties, text->GetData(), text->GetDict());
    const RefCntPtr<Column> alone = ColumnOf(L"text", L"alone", values);
    const auto build = [](const RefCntPtr<Table>& source, double share) {
        const auto flow = MakeRef<SampleSelect>(source, share, 5);
        auto table = MakeRef<FlowTable>(flow, FlowTable::anyEncoding, ColumnWriter::Purpose::storage);
        table->Build(1000);
        return std::pair(table, flow->GetSelected());
    };
    const auto source = TableOf({alone});
    source->Build(1);
    for (const double share : {0.0, 0.01, 0.5, 1.0}) {
        const auto [table, selected] = build(source, share);
        Column& column = *table->GetColumn(L"alone");
        const std::vector<std::string> cells = Cells(column);
        ASSERT_EQ(cells.size(), selected.size());
        uint64_t bytes = 0;
        for (size_t i = 0; i < cells.size(); ++i) {
            const std::string& value = values[selected[i]];
            ASSERT_EQ(cells[i], value == "NULL" ? value : "'" + value + "'");
            bytes += value == "NULL" ? 0 : value.size() + 8;
        }
        EXPECT_LE(column.GetDict()->GetSize(), bytes * 4 / 3 + 64) << share;
        EXPECT_EQ(column.GetDict() == alone->GetDict(), share == 1.0);
        if (share == 0.5) {
            EXPECT_NE(column.GetDictionaryToken(Atom(L"text", values[selected[0] % 50 ? selected[0] : selected[1]])),
                      usrheap::null_token);
            EXPECT_TRUE(column.HasProperty(usrpropkey::distinct));
        }
    }
    const auto both = TableOf({text, twin});
    both->Build(1);
    const auto shared = build(both, 0.01).first;
    EXPECT_EQ(shared->GetColumn(L"t")->GetDict(), shared->GetColumn(L"u")->GetDict());
}

// A flow over two tables, so that the dictionary of its column changes on the way.
class Concatenation : public DataFlow {
public:
    Concatenation(RefCntPtr<LeafTable> first, RefCntPtr<LeafTable> second)
        : DataFlow(nullptr, first->GetColumnNames()), m_first(MakeRef<Scan>(first)), m_second(MakeRef<Scan>(second)) {}
    void Accept(OperatorVisitor&) override {}
    RefCntPtr<Column> LoadColumn(const std::wstring& name) const override {
        const RefCntPtr<Column> column = m_first->GetColumn(name);
        return MakeRef<Column>(column->GetProperties(), column->GetData(), column->GetDict());
    }
    unsigned Next(unsigned pageSize) override {
        Scan* scan = m_first.get();
        if (scan->Next(pageSize) == 0) {
            scan = m_second.get();
            scan->Next(pageSize);
        }
        for (const auto& entry : m_columns) GetColumn(entry.first)->ShareStreams(*scan->GetColumn(entry.first));
        return SetPage(scan->GetExtent());
    }

private:
    RefCntPtr<Scan> m_first;
    RefCntPtr<Scan> m_second;
};

TEST(FlowTableTest, ChangingDictionariesAreMerged) {
    const auto first = TableOf({ColumnOf(L"text", L"t", {"a", "b", "NULL"}), ColumnOf(L"long", L"n", {"1", "2", "3"})});
    const auto second = TableOf({ColumnOf(L"text", L"t", {"zz", "b", "a"}), ColumnOf(L"long", L"n", {"4", "5", "6"})});
    for (const unsigned pageSize : {1u, 2u, 1024u}) {
        FlowTable table(MakeRef<Concatenation>(first, second));
        EXPECT_EQ(table.Build(pageSize), 6u);
        EXPECT_EQ(Cells(*table.GetColumn(L"t")),
                  (std::vector<std::string>{"'a'", "'b'", "NULL", "'zz'", "'b'", "'a'"}));
        EXPECT_EQ(Cells(*table.GetColumn(L"n")), (std::vector<std::string>{"1", "2", "3", "4", "5", "6"}));
        EXPECT_NE(table.GetColumn(L"t")->GetDict(), first->GetColumn(L"t")->GetDict());
    }
    // What looks at the pages themselves follows the change too.
    Select flow(MakeRef<Concatenation>(first, second),
                MakeRef<SelectBinaryExp>(L"eq", MakeRef<ColumnExp>(L"t"), Literal(L"text", "a")));
    EXPECT_EQ(Drain(flow, {L"n"}, 2), (std::vector<std::vector<std::string>>{{"1"}, {"6"}}));
}

TEST(FlowTableTest, CancelEndsTheDrain) {
    const auto scan = MakeRef<Scan>(TableOf({ColumnOf(L"long", L"a", {"1", "2"})}));
    FlowTable table(scan);
    scan->SetCancelled();
    EXPECT_THROW(table.Build(1024), Operator::CancelledException);
}

}  // namespace
}  // namespace qve
