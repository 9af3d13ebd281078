// Groups that are more than the memory budget holds: the rows of those that come late are set aside and grouped
// afterwards, and the result is that of one pass.

#include <gtest/gtest.h>

#include "algebra/Aggr.h"
#include "algebra/AggrExp.h"
#include "algebra/Append.h"
#include "algebra/ColumnExp.h"
#include "algebra/Scan.h"
#include "os/BudgetedMemory.h"
#include "storage/Column.h"
#include "storage/stream/TempFileDataStream.h"
#include "system/ProgressCallback.h"
#include "tests/algebra/flow_cells.h"
#include "tests/algebra/sample_rows.h"
#include "types/builtin.h"

namespace qve {
namespace {

using TextRows = std::vector<std::vector<std::string>>;

class SmallBudget {
public:
    SmallBudget() { BudgetedMemory::SetBudget(1 << 20); }
    ~SmallBudget() { BudgetedMemory::SetBudget(0); }
};

RefCntPtr<Exp> Measure(const std::wstring& name, const std::wstring& op, const std::wstring& column) {
    return MakeRef<AggrBinaryExp>(name, op, MakeRef<ColumnExp>(column));
}

std::vector<RefCntPtr<Exp>> Measures() {
    return {MakeRef<AggrUnaryExp>(L"n", L"countstar"), Measure(L"s", L"sum", L"v"), Measure(L"m", L"max", L"t"),
            Measure(L"a", L"any", L"t")};
}

RefCntPtr<LeafTable> Sample(const std::vector<std::wstring>& keyTypes, unsigned rows, unsigned seed) {
    std::mt19937 random(seed);
    std::vector<RefCntPtr<Column>> columns;
    for (const std::wstring& type : keyTypes) {
        const std::wstring name = L"k" + std::to_wstring(columns.size());
        columns.push_back(SampleColumn(type, name, rows, {.distinct = 3000, .nulls = 0.02}, random));
    }
    columns.push_back(SampleColumn(L"long", L"v", rows, {.distinct = 1000, .nulls = 0.2}, random));
    columns.push_back(SampleColumn(L"text", L"t", rows, {.distinct = 500, .nulls = 0.2}, random));
    return TableOf(columns);
}

TextRows Groups(RefCntPtr<DataFlow> flow, const ColumnNames& keys, unsigned pageSize) {
    Aggr aggr(std::move(flow), keys, Measures());
    aggr.Build(pageSize);
    std::vector<std::wstring> names(keys.begin(), keys.end());
    for (const wchar_t* name : {L"n", L"s", L"m", L"a"}) names.push_back(name);
    return Rows(aggr, names);
}

TEST(AggrSpillTest, GivesTheGroupsOfOnePassInTheirOrder) {
    struct Case {
        std::vector<std::wstring> types;
        unsigned rows;
        unsigned pageSize;
        double share;
    };
    const Case cases[] = {{{L"bigint", L"long"}, 20000, 1024, 1.0},
                          {{L"text", L"double"}, 20000, 100, 1.0},
                          {{L"text", L"date", L"tiny"}, 9000, 1, 0.4},
                          {{L"datetime", L"short"}, 9000, 1024, 0.4}};
    for (const Case& one : cases) {
        ColumnNames keys;
        for (size_t i = 0; i < one.types.size(); ++i) keys.insert(L"k" + std::to_wstring(i));
        const auto groups = [&] {
            return Groups(MakeRef<SampleSelect>(Sample(one.types, one.rows, 5), one.share, 6), keys, one.pageSize);
        };
        const TextRows expected = groups();
        EXPECT_GT(expected.size(), 2000u);
        const SmallBudget budget;
        EXPECT_EQ(groups(), expected);
    }
}

// Behind the first input the texts are of another dictionary.
TEST(AggrSpillTest, KeepsTextsOfSeveralDictionaries) {
    const auto groups = [] {
        const auto scan = [](unsigned seed) { return MakeRef<Scan>(Sample({L"text", L"long"}, 9000, seed)); };
        return Groups(
            MakeRef<Append>(scan(1), std::vector<RefCntPtr<DataFlow>>{scan(2)}, std::vector<Append::Renames>{{}}),
            {L"k0", L"k1"}, 1024);
    };
    const TextRows expected = groups();
    const SmallBudget budget;
    EXPECT_EQ(groups(), expected);
}

// As many groups as rows, and so many rows that most lie in a file.
TEST(AggrSpillTest, TakesAsManyGroupsAsRows) {
    constexpr uint64_t rows = 600000;
    constexpr uint64_t step = 0x9E3779B97F4A7C15;
    const auto column = [](const wchar_t* name, uint64_t factor) {
        usrprops properties = builtin::primitive_props(L"bigint");
        properties.set(usrpropkey::name, name);
        auto made = MakeRef<Column>(std::move(properties), MakeRef<TempFileDataStream>());
        std::vector<long long> cells(rows);
        for (uint64_t i = 0; i < rows; ++i) cells[i] = static_cast<long long>(i * factor);
        made->GetData()->Append(cells.data(), rows * sizeof(long long));
        return made;
    };
    const auto table = TableOf({column(L"k", step), column(L"v", 1)});
    const SmallBudget budget;
    Aggr aggr(MakeRef<Scan>(table), {L"k"}, {Measure(L"s", L"sum", L"v")});
    EXPECT_EQ(aggr.Build(1024), rows);
    const auto keys = aggr.GetColumn(L"k");
    const auto sums = aggr.GetColumn(L"s");
    uint64_t wrong = 0;
    for (uint64_t row = 0; row < rows; row += 1000) {
        keys->Seek(row, 1000);
        sums->Seek(row, 1000);
        for (uint64_t i = 0; i < 1000; ++i) {
            wrong += keys->GetInput().values<uint64_t>()[i] != (row + i) * step;
            wrong += sums->GetInput().values<uint64_t>()[i] != row + i;
        }
    }
    EXPECT_EQ(wrong, 0u);
}

TEST(AggrSpillTest, EndsWhenCancelled) {
    Aggr aggr(MakeRef<Scan>(Sample({L"bigint"}, 9000, 1)), {L"k0"}, Measures());
    aggr.GetProgressCallback()->SetCancelled();
    EXPECT_THROW(aggr.Build(1024), Operator::CancelledException);
}

}  // namespace
}  // namespace qve
