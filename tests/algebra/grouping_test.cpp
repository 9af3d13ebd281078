#include <algorithm>
#include <map>
#include <tuple>

#include "algebra/ArrayGrouping.h"
#include "algebra/ColumnExp.h"
#include "algebra/ConcurrentHashGrouping.h"
#include "algebra/FetchGrouping.h"
#include "algebra/GroupPartition.h"
#include "algebra/HashGrouping.h"
#include "algebra/MergeGrouping.h"
#include "algebra/PerfectHashGrouping.h"
#include "algebra/RadixCluster.h"
#include "algebra/RadixGrouping.h"
#include "primitives/vector_level.h"
#include "storage/stream/TempFileDataStream.h"
#include "tests/algebra/sample_rows.h"
#include "types/atom_hash.h"
#include "types/builtin.h"

namespace qve {
namespace {

constexpr unsigned seed = 20260714;

/// Runs the protocol of a grouping over pages of one flow, storing the keys of new groups as an owner does.
class Owner {
public:
    Owner(RefCntPtr<Grouping> grouping, const RefCntPtr<LeafTable>& rows, const RefCntPtr<LeafTable>& groups,
          const std::wstring& key)
        : m_grouping(std::move(grouping)),
          m_scan(MakeRef<Scan>(rows)),
          m_rowKey(m_scan->GetColumn(key)),
          m_groupKey(groups->GetColumn(key)),
          m_context(m_grouping->MakeContext(m_scan.get(), groups.get())) {}

    /// The groups of all rows; a constant page is spread out.
    std::vector<unsigned> Run(unsigned pageSize) {
        std::vector<unsigned> all;
        std::vector<unsigned> misses(pageSize + 1);
        std::vector<unsigned> inserts(pageSize + 1);
        std::vector<unsigned> page(pageSize);
        while (const unsigned count = m_scan->Next(pageSize)) {
            const input_column hashes = m_grouping->HashInsert(count, count, nullptr, m_context.get());
            unsigned char flags = 0;
            const output_column groups{page.data(), nullptr, sizeof(unsigned), pageSize, &flags};
            unsigned missing = m_grouping->Probe(count, misses.data(), groups, hashes, nullptr, m_context.get());
            if (missing > 0) flags = 0;
            rounds = 0;
            while (missing > 0) {
                EXPECT_TRUE(m_grouping->Accepts(missing, misses.data(), hashes));
                const unsigned found = m_grouping->FindInserts(missing, inserts.data(), misses.data(), hashes);
                EXPECT_GT(found, 0u);
                const unsigned first = m_grouping->GetSize();
                for (unsigned i = 0; i < found; ++i) page[inserts[i]] = first + i;
                m_grouping->InsertHashes(found, inserts.data(), hashes, first);
                m_groupKey->Append(found, m_rowKey->GetInput(), inserts.data(), false);
                m_grouping->SetSize(first + found);
                const unsigned left = missing - found;
                missing = m_grouping->Probe(left, misses.data(), groups, hashes, misses.data(), m_context.get());
                if (left > 0) flags = 0;
                ++rounds;
            }
            for (unsigned i = 0; i < count; ++i) {
                all.push_back(page[flags & column_flags::constant ? 0 : i]);
            }
        }
        return all;
    }

    unsigned rounds = 0;

private:
    const RefCntPtr<Grouping> m_grouping;
    const RefCntPtr<Scan> m_scan;
    const RefCntPtr<Column> m_rowKey;
    const RefCntPtr<Column> m_groupKey;
    const RefCntPtr<Grouping::Context> m_context;
};

std::vector<unsigned> NaiveGroups(const std::vector<std::string>& keys) {
    std::map<std::string, unsigned> numbers;
    std::vector<unsigned> groups;
    for (const std::string& key : keys) {
        groups.push_back(numbers.emplace(key, static_cast<unsigned>(numbers.size())).first->second);
    }
    return groups;
}

RefCntPtr<LeafTable> DoublesTable(const std::vector<double>& values) {
    usrprops properties = builtin::primitive_props(L"double");
    properties.set(usrpropkey::name, L"k");
    const auto column = MakeRef<Column>(properties, MakeRef<TempFileDataStream>());
    column->Extend(values.size());
    std::copy(values.begin(), values.end(), column->GetOutput().values<double>());
    column->Seek(0, 0);
    return TableOf({column});
}

TEST(HashGrouping, KeysWithOneHashGetGroupsOfTheirOwn) {
    // Enough numbers that some pairs have one hash; keep only those.
    std::map<unsigned, std::vector<double>> byHash;
    for (int i = 0; i < 250000; ++i) byHash[atom_hash(static_cast<double>(i))].push_back(i);
    std::vector<double> values;
    for (const auto& [hash, colliding] : byHash) {
        if (colliding.size() > 1) values.insert(values.end(), colliding.begin(), colliding.end());
    }
    ASSERT_GE(values.size(), 4u);
    const size_t distinct = values.size();
    const std::vector<double> once = values;
    values.insert(values.end(), once.rbegin(), once.rend());

    for (const unsigned pageSize : {1u, 3u, 1024u}) {
        const auto rows = DoublesTable(values);
        const auto groups = DoublesTable({});
        const auto scan = MakeRef<Scan>(rows);
        const auto own = HashGrouping::ResolveHash(*scan, {L"k"});
        ASSERT_TRUE(own);
        const auto grouping =
            MakeRef<HashGrouping>(CompareSemantics::nullsMatch, own, own, std::vector<std::wstring>{L"k"}, 0);
        Owner owner(grouping, rows, groups, L"k");
        const std::vector<unsigned> found = owner.Run(pageSize);
        EXPECT_EQ(grouping->GetSize(), distinct);
        EXPECT_TRUE(grouping->HasCollisions());
        std::vector<bool> seen(distinct);
        for (size_t i = 0; i < distinct; ++i) {
            ASSERT_LT(found[i], distinct);
            EXPECT_FALSE(seen[found[i]]);
            seen[found[i]] = true;
            EXPECT_EQ(found[2 * distinct - 1 - i], found[i]);
        }
    }
}

TEST(HashGrouping, APageOfEqualKeysIsResolvedInOneRound) {
    const auto rows = DoublesTable(std::vector<double>(500, 2.5));
    const auto scan = MakeRef<Scan>(rows);
    const auto hash = HashGrouping::ResolveHash(*scan, {L"k"});
    const auto grouping =
        MakeRef<HashGrouping>(CompareSemantics::nullsMatch, hash, hash, std::vector<std::wstring>{L"k"}, 0);
    Owner owner(grouping, rows, DoublesTable({}), L"k");
    EXPECT_EQ(owner.Run(500), std::vector<unsigned>(500, 0));
    EXPECT_EQ(owner.rounds, 1u);
    EXPECT_FALSE(grouping->HasCollisions());
}

TEST(RadixGrouping, TakesWhatFitsIntoSixteenBits) {
    std::mt19937 random(seed);
    SampleOptions options;
    options.distinct = 300;
    options.nulls = 0.1;
    const auto sample = [&](const wchar_t* type) {
        return MakeRef<Scan>(TableOf({SampleColumn(type, L"k", 10, options, random)}));
    };
    for (const wchar_t* type : {L"bit", L"tiny", L"uchr", L"short", L"usht"}) {
        EXPECT_TRUE(RadixGrouping::ResolveHash(*sample(type), {L"k"}));
    }
    for (const wchar_t* type : {L"long", L"float", L"double", L"oid", L"text"}) {
        EXPECT_FALSE(RadixGrouping::ResolveHash(*sample(type), {L"k"}));
    }
}

TEST(ArrayGrouping, LearnsTheRangeFromTheRows) {
    std::mt19937 random(seed);
    for (const wchar_t* type : {L"long", L"bigint", L"ulng", L"oid", L"date", L"text"}) {
        SCOPED_TRACE(std::string(type, type + std::char_traits<wchar_t>::length(type)));
        SampleOptions options;
        options.distinct = 4000;
        options.nulls = 0.05;
        options.spread = 3;
        const RefCntPtr<Column> keys = SampleColumn(type, L"k", 9000, options, random);
        const auto rows = TableOf({keys});
        const auto groups = TableOf({MakeRef<Column>(*keys, MakeRef<TempFileDataStream>())});
        const auto grouping = ArrayGrouping::Resolve(*MakeRef<Scan>(rows), L"k", CompareSemantics::nullsMatch);
        if (!grouping) {
            // Only tokens that are known to be unique stand for their values.
            EXPECT_FALSE(keys->HasProperty(usrpropkey::distinct));
            continue;
        }
        Owner owner(grouping, rows, groups, L"k");
        EXPECT_EQ(owner.Run(100), NaiveGroups(Cells(*keys)));
        grouping->Reset(0);
        EXPECT_EQ(grouping->GetSize(), 0u);
    }
}

TEST(ArrayGrouping, RefusesARangeThatNoArrayIsGoodFor) {
    const auto rows = TableOf({ColumnOf(L"oid", L"k", {"5", "18446744073709551614", "NULL"})});
    const auto scan = MakeRef<Scan>(rows);
    const auto grouping = ArrayGrouping::Resolve(*scan, L"k", CompareSemantics::nullsMatch);
    const auto context = grouping->MakeContext(scan.get(), rows.get());
    scan->Next(10);
    const input_column hashes = grouping->HashInsert(3, 3, nullptr, context.get());
    const unsigned all[] = {0, 1, 2};
    EXPECT_FALSE(grouping->Accepts(3, all, hashes));
    const unsigned nullOnly[] = {2};
    EXPECT_TRUE(grouping->Accepts(1, nullOnly, hashes));
    const unsigned last[] = {1};
    EXPECT_TRUE(grouping->Accepts(1, last, hashes));
}

TEST(PerfectHashGrouping, NumbersEveryKeyOfThirtyTwoBits) {
    std::mt19937 random(seed);
    for (const wchar_t* type : {L"long", L"ulng", L"date"}) {
        SampleOptions options;
        options.distinct = 4000;
        options.nulls = 0.05;
        options.spread = 100003;
        const RefCntPtr<Column> keys = SampleColumn(type, L"k", 9000, options, random);
        const auto rows = TableOf({keys});
        const auto groups = TableOf({MakeRef<Column>(*keys, MakeRef<TempFileDataStream>())});
        const auto hash = PerfectHashGrouping::ResolveHash(*MakeRef<Scan>(rows), {L"k"});
        ASSERT_TRUE(hash);
        Owner owner(MakeRef<PerfectHashGrouping>(CompareSemantics::nullsMatch, hash, hash, 0), rows, groups, L"k");
        EXPECT_EQ(owner.Run(100), NaiveGroups(Cells(*keys)));
    }
    const auto pair = MakeRef<Scan>(TableOf({ColumnOf(L"short", L"a", {"1"}), ColumnOf(L"usht", L"b", {"1"}),
                                             ColumnOf(L"tiny", L"c", {"1"}), ColumnOf(L"double", L"d", {"1"})}));
    EXPECT_TRUE(PerfectHashGrouping::ResolveHash(*pair, {L"a", L"b"}));
    EXPECT_FALSE(PerfectHashGrouping::ResolveHash(*pair, {L"a", L"b", L"c"}));
    EXPECT_FALSE(PerfectHashGrouping::ResolveHash(*pair, {L"d"}));
    EXPECT_FALSE(PerfectHashGrouping::ResolveHash(*pair, {L"c"}));  // for the direct table
}

TEST(FetchGrouping, NumbersRowsInTheOrderOfTheirKeys) {
    const std::vector<std::string> keys = {"NULL", "3", "3", "3", "4", "9", "9", "12"};
    const auto ordered = [&] {
        const RefCntPtr<Column> column = ColumnOf(L"long", L"k", keys);
        column->SetProperty(usrpropkey::ordered, L"asc");
        return column;
    };
    for (const unsigned pageSize : {1u, 3u, 100u}) {
        const auto rows = TableOf({ordered()});
        const auto groups = TableOf({MakeRef<Column>(*ordered(), MakeRef<TempFileDataStream>())});
        const auto partition = FetchGrouping::ResolvePartition(*MakeRef<Scan>(rows), {L"k"});
        ASSERT_TRUE(partition);
        Owner owner(MakeRef<FetchGrouping>(CompareSemantics::nullsMatch, partition, partition), rows, groups, L"k");
        EXPECT_EQ(owner.Run(pageSize), NaiveGroups(keys));
    }
    EXPECT_FALSE(FetchGrouping::ResolvePartition(*MakeRef<Scan>(TableOf({ColumnOf(L"long", L"k", keys)})), {L"k"}));
}

TEST(FetchGrouping, TakesColumnsThatLeadASortOrder) {
    const auto at = [](const wchar_t* name, const wchar_t* position) {
        const RefCntPtr<Column> column = ColumnOf(L"long", name, {"1"});
        if (*position) column->SetProperty(usrpropkey::sort_position, position);
        return column;
    };
    const auto rows = MakeRef<Scan>(TableOf({at(L"a", L"0"), at(L"b", L"1"), at(L"c", L"2"), at(L"d", L"")}));
    EXPECT_TRUE(FetchGrouping::ResolvePartition(*rows, {L"b", L"a"}));
    EXPECT_FALSE(FetchGrouping::ResolvePartition(*rows, {L"a", L"c"}));
    EXPECT_FALSE(FetchGrouping::ResolvePartition(*rows, {L"b"}));
    EXPECT_FALSE(FetchGrouping::ResolvePartition(*rows, {L"a", L"d"}));
    // The first column of the order is not read.
    EXPECT_FALSE(FetchGrouping::ResolvePartition(*MakeRef<Scan>(TableOf({at(L"b", L"1")})), {L"b"}));
}

TEST(MergeGrouping, NeedsOneCondition) {
    const auto rows = MakeRef<Scan>(TableOf({ColumnOf(L"long", L"k", {"1"})}));
    const auto key = MakeRef<ColumnExp>(L"k");
    const auto with = [&](MergeGrouping::Conditions conditions) {
        return StatusOf([&] {
            MakeRef<MergeGrouping>(CompareSemantics::nullsMatch, conditions)->MakeContext(rows.get(), nullptr);
        });
    };
    EXPECT_EQ(with({}), 40219);
    EXPECT_EQ(with({{key, key}, {key, key}}), 40220);
    EXPECT_EQ(with({{key, key}}), 0);
}

TEST(ConcurrentHashGrouping, SeparatesKeysOfOneHashAndChainsEqualOnes) {
    // Numbers of which some have one hash, each three times.
    std::map<unsigned, std::vector<double>> byHash;
    for (int i = 0; i < 250000; ++i) byHash[atom_hash(static_cast<double>(i))].push_back(i);
    std::vector<double> values;
    for (const auto& [hash, colliding] : byHash) {
        if (colliding.size() > 1) values.insert(values.end(), colliding.begin(), colliding.end());
    }
    const auto distinct = static_cast<unsigned>(values.size());
    ASSERT_GE(distinct, 4u);
    for (unsigned i = 0; i < 2 * distinct; ++i) values.push_back(values[i]);
    values.resize(200000, -1.0);  // several tasks

    const auto rows = DoublesTable(values);
    const auto scan = MakeRef<Scan>(DoublesTable(values));
    const auto hash = HashGrouping::ResolveHash(*scan, {L"k"});
    const std::vector<std::wstring> names = {L"k"};
    const auto grouping = MakeRef<ConcurrentHashGrouping>(CompareSemantics::nullsDiffer, hash, hash, names, names);
    ASSERT_TRUE(grouping->HashInner(rows, *rows, names, 1000, nullptr));
    EXPECT_TRUE(grouping->HasCollisions());
    EXPECT_TRUE(grouping->CanHashInnerConcurrently());
    grouping->GetLinks()->Seek(0, values.size());
    const unsigned* links = grouping->GetLinks()->GetInput().values<unsigned>();

    const auto context = grouping->MakeContext(scan.get(), rows.get());
    const unsigned count = scan->Next(3 * distinct);
    std::vector<unsigned> groups(count), hits(count + 1);
    const input_column hashes = grouping->HashProbe(count, count, nullptr, context.get());
    unsigned char flags = 0;
    const output_column out{groups.data(), nullptr, sizeof(unsigned), count, &flags};
    EXPECT_EQ(grouping->ProbeHits(count, hits.data(), out, hashes, nullptr, context.get()), count);
    for (unsigned i = 0; i < count; ++i) {
        EXPECT_EQ(groups[i], i % distinct);
        EXPECT_EQ(links[i], i + distinct < 3 * distinct ? i + distinct : Grouping::noGroup);
    }
    EXPECT_EQ(links[values.size() - 2], values.size() - 1);
}

TEST(Grouping, WithoutKeysThereIsOneGroupOnceThereIsARow) {
    const auto grouping = MakeRef<Grouping>(CompareSemantics::nullsMatch);
    unsigned char flags = 0;
    unsigned groups[1] = {};
    unsigned misses[2] = {};
    unsigned inserts[2] = {};
    const output_column out{groups, nullptr, sizeof(unsigned), 1, &flags};
    const input_column hashes = grouping->HashInsert(9, 9, nullptr, nullptr);
    EXPECT_EQ(grouping->GetSize(), 0u);
    EXPECT_EQ(*hashes.values<unsigned>(), Grouping::noGroup);
    ASSERT_EQ(grouping->Probe(9, misses, out, hashes, nullptr, nullptr), 1u);
    ASSERT_EQ(grouping->FindInserts(1, inserts, misses, hashes), 1u);
    grouping->InsertHashes(1, inserts, hashes, 0);
    EXPECT_EQ(grouping->Probe(9, misses, out, hashes, nullptr, nullptr), 0u);
    EXPECT_EQ(groups[0], 0u);
    EXPECT_TRUE(flags & column_flags::constant);
}

TEST(Grouping, MatchedRowsAndLinksOfAnInnerTable) {
    class Inner : public Grouping {
    public:
        Inner() : Grouping(CompareSemantics::nullsDiffer) { MakeLinkColumn(4); }
        using Grouping::SetLink;
    };
    const auto grouping = MakeRef<Inner>();
    grouping->SetLink(1, 3);
    EXPECT_EQ(Cells(*grouping->GetLinks()), (std::vector<std::string>{"NULL", "3", "NULL", "NULL"}));
    EXPECT_FALSE(grouping->GetInnerMatched());
    grouping->CreateInnerMatched(6);
    const unsigned rows[] = {9, 1, 0, 9};
    const unsigned selection[] = {1, 3};
    grouping->MarkInnerMatched(2, 4, 2, input_column{rows, nullptr, 4, 4, 0},
                               input_column{selection, nullptr, 4, 2, 0});
    EXPECT_EQ(Cells(*grouping->GetInnerMatched()), (std::vector<std::string>{"f", "f", "f", "t", "f", "f"}));
}

class GroupPartitionTest : public testing::TestWithParam<vector_level> {
protected:
    void SetUp() override { set_vector_level(GetParam()); }
    void TearDown() override { set_vector_level(supported_vector_level()); }
};
INSTANTIATE_TEST_SUITE_P(Levels, GroupPartitionTest, testing::Values(vector_level::scalar, supported_vector_level()));

TEST_P(GroupPartitionTest, SplitsAPageByGroupInOrder) {
    std::mt19937 random(seed);
    GroupPartition partition;
    for (const unsigned count : {1u, 3u, 4u, 7u, 16u, 17u, 1000u}) {
        std::vector<unsigned> numbers(count * 2);
        for (unsigned& number : numbers) number = random() % GroupPartition::maxGroups;
        std::vector<unsigned> selection;
        for (unsigned i = 0; i < count; ++i) selection.push_back(2 * i + (random() & 1));
        for (const unsigned* sel : {static_cast<const unsigned*>(nullptr), std::as_const(selection).data()}) {
            partition.Reset(GroupPartition::maxGroups, count, input_column{numbers.data(), nullptr, 4, count * 2, 0},
                            sel);
            unsigned total = 0;
            for (unsigned group = 0; group < GroupPartition::maxGroups; ++group) {
                const unsigned* rows = partition.GetSelection(group);
                for (unsigned i = 0; i < partition.GetCount(group); ++i) {
                    EXPECT_EQ(numbers[rows[i]], group);
                    if (i > 0) {
                        EXPECT_LT(rows[i - 1], rows[i]);
                    }
                    if (sel) {
                        EXPECT_TRUE(std::binary_search(selection.begin(), selection.end(), rows[i]));
                    }
                }
                EXPECT_EQ(*partition.GetNumbers(group).values<unsigned>(), group);
                total += partition.GetCount(group);
            }
            EXPECT_EQ(total, count);
        }
    }
}

TEST(RadixCluster, SplitsByWindowAndSkipsEmptyOnes) {
    const unsigned numbers[] = {1000, 1003, 1064, 1001, 1200, 1066};
    const input_column column{numbers, nullptr, 4, 6, 0};
    const unsigned sel[] = {0, 2, 3, 4, 5};
    RadixCluster cluster;
    cluster.Reset(1201, 5, column, sel, 5, 1000);
    std::vector<std::tuple<uint64_t, unsigned, unsigned>> seen;  // window, row, number in it
    for (; cluster.GetCount() > 0; cluster.Next()) {
        for (unsigned i = 0; i < cluster.GetCount(); ++i) {
            const unsigned row = cluster.GetSelection()[i];
            seen.emplace_back(cluster.GetPosition(), row, cluster.GetNumbers().values<unsigned>()[row]);
        }
    }
    EXPECT_EQ(seen, (std::vector<std::tuple<uint64_t, unsigned, unsigned>>{
                        {0, 0, 0}, {0, 3, 1}, {64, 2, 0}, {64, 5, 2}, {192, 4, 8}}));

    // What fits into one window passes as it is.
    cluster.Reset(2000, 5, column, sel, 11, 0);
    EXPECT_EQ(cluster.GetSelection(), sel);
    EXPECT_EQ(cluster.GetNumbers().data, numbers);
    cluster.Next();
    EXPECT_EQ(cluster.GetCount(), 0u);
    cluster.Reset(0, 0, column, nullptr, 5, 0);
    EXPECT_EQ(cluster.GetCount(), 0u);
}

}  // namespace
}  // namespace qve
