#include <gtest/gtest.h>

#include <numeric>

#include "algebra/ColumnExp.h"
#include "algebra/CompressExp.h"
#include "algebra/ExpandExp.h"
#include "algebra/PartitionExp.h"
#include "algebra/Scan.h"
#include "algebra/SelectExp.h"
#include "algebra/status.h"
#include "tests/algebra/flow_cells.h"
#include "tests/algebra/sample_rows.h"

namespace qve {
namespace {

using Texts = std::vector<std::string>;

TEST(CompressExpTest, EqualValuesShareATokenAndExpandToThemselves) {
    std::mt19937 random(11);
    for (const std::wstring& type : SampleTypes()) {
        const auto table =
            TableOf({SampleColumn(type, L"c", 700, {.distinct = 40, .nulls = 0.1, .nan = true}, random)});
        const auto scan = MakeRef<Scan>(table);
        const auto compressed = MakeRef<CompressExp>(L"", MakeRef<ColumnExp>(L"c"));
        const auto expanded = MakeRef<ExpandExp>(L"back", compressed);
        const auto plain = MakeRef<ColumnExp>(L"c");
        expanded->AllocateColumn(scan.get());
        plain->AllocateColumn(scan.get());
        EXPECT_EQ(compressed->GetName(), L"c");
        EXPECT_TRUE(compressed->GetColumn()->IsCompressed());
        std::map<std::string, uint64_t> tokens;
        while (const unsigned extent = scan->Next(100)) {
            std::vector<unsigned> rows;
            for (unsigned row = 0; row < extent; ++row) {
                if (random() % 4) rows.push_back(row);
            }
            const auto count = static_cast<unsigned>(rows.size());
            expanded->Evaluate(count, extent, rows.data(), scan.get());
            plain->Evaluate(count, extent, rows.data(), scan.get());
            const Texts expected = PageCells(*plain, rows);
            ASSERT_EQ(PageCells(*expanded, rows), expected) << std::string(type.begin(), type.end());
            const input_column page = compressed->GetResult();
            for (unsigned k = 0; k < count; ++k) {
                uint64_t token = 0;
                std::memcpy(&token, page.values<char>() + rows[k] * page.width, page.width);
                const auto [found, first] = tokens.emplace(expected[k], token);
                ASSERT_EQ(found->second, token);
            }
        }
        std::set<uint64_t> different;
        for (const auto& [value, token] : tokens) different.insert(token);
        EXPECT_EQ(different.size(), tokens.size());
    }
}

TEST(CompressExpTest, AConstantStaysOneValue) {
    const auto exp = MakeRef<ExpandExp>(L"", MakeRef<CompressExp>(L"", Literal(L"double", "2.5")));
    exp->AllocateColumn(nullptr);
    EXPECT_TRUE(exp->IsConstant());
    exp->Evaluate(1, 1, nullptr, nullptr);
    EXPECT_EQ(PageCells(*exp, {0}), Texts{"2.5"});
}

TEST(CompressExpTest, RefusesWhatHasNoValuesOrNoDictionary) {
    const auto scan = MakeRef<Scan>(TableOf({ColumnOf(L"long", L"a", {"1", "2"})}));
    scan->Next(2);
    const auto select = MakeRef<SelectUnaryExp>(L"isnull", MakeRef<ColumnExp>(L"a"));
    EXPECT_EQ(StatusOf([&] { CompressExp(L"", select).AllocateColumn(scan.get()); }), status::CompressExp_MakeColumn);
    EXPECT_EQ(StatusOf([&] { ExpandExp(L"", MakeRef<ColumnExp>(L"a")).AllocateColumn(scan.get()); }),
              status::ExpandExp_MakeColumn);

    const auto compressed = MakeRef<CompressExp>(L"", MakeRef<ColumnExp>(L"a"));
    class Spoilt : public CountingExp {
    public:
        using CountingExp::CountingExp;
        void Evaluate(unsigned count, unsigned extent, const unsigned* sel, const Namespace* input) override {
            CountingExp::Evaluate(count, extent, sel, input);
            m_column->GetOutput(0).values<unsigned>()[1] = 2;  // there are two entries
        }
    };
    ExpandExp exp(L"", MakeRef<Spoilt>(compressed));
    exp.AllocateColumn(scan.get());
    try {
        exp.Evaluate(2, 2, nullptr, scan.get());
        FAIL() << "no exception";
    } catch (const QVE_OutOfRange& fault) {
        EXPECT_STREQ(fault.what(), "ExpandExp::Evaluate token out of range.");
        EXPECT_EQ(fault.GetStatus(), status::ExpandExp_Evaluate);
    }
}

TEST(PartitionExpTest, NumbersRunsOfEqualKeys) {
    const auto table = TableOf({ColumnOf(L"long", L"a", {"1", "1", "1", "2", "2", "NULL", "NULL", "2"}),
                                ColumnOf(L"text", L"s", {"x", "x", "y", "y", "y", "y", "NULL", "NULL"})});
    const Texts expected{"0", "0", "1", "2", "2", "3", "4", "5"};
    for (const unsigned pageSize : {1u, 3u, 8u}) {
        const auto scan = MakeRef<Scan>(table);
        PartitionExp exp(PartitionExp::partitionName,
                         {MakeRef<ColumnExp>(L"a"), Literal(L"long", "5"), MakeRef<ColumnExp>(L"s")});
        exp.AllocateColumn(scan.get());
        Texts numbers;
        while (const unsigned extent = scan->Next(pageSize)) {
            exp.Evaluate(extent, extent, nullptr, scan.get());
            std::vector<unsigned> rows(extent);
            std::iota(rows.begin(), rows.end(), 0);
            for (std::string& number : PageCells(exp, rows)) numbers.push_back(std::move(number));
        }
        EXPECT_EQ(numbers, expected);
    }
    // Rows that are not selected do not count.
    const auto scan = MakeRef<Scan>(table);
    scan->Next(8);
    PartitionExp exp(L"", {MakeRef<ColumnExp>(L"a")});
    exp.AllocateColumn(scan.get());
    const std::vector<unsigned> rows{0, 3, 7};
    exp.Evaluate(3, 8, rows.data(), scan.get());
    EXPECT_EQ(PageCells(exp, rows), (Texts{"0", "1", "1"}));
}

}  // namespace
}  // namespace qve
