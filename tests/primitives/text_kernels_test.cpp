#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <random>

#include "storage/stream/MemoryDataStream.h"
#include "system/UnicodeUnits.h"
#include "tests/primitives/find_kernel.h"
#include "types/datatraits.h"
#include "types/usrheap.h"
#include "types/varchar.h"

namespace qve::test {
namespace {

using text = std::optional<std::string>;

/// A column of texts with a heap of its own.
class text_column {
public:
    explicit text_column(const std::vector<text>& values = {}, size_t scale = 1, const wchar_t* collation = L"binary")
        : m_type(varchar::usrtypeof(varchar::clob_precision, scale, collation)),
          m_stream(MakeRef<MemoryDataStream>()),
          m_heap(m_type->heap(m_stream.get())) {
        for (const text& value : values) m_tokens.push_back(put(value));
    }

    unsigned put(const text& value) {
        if (!value) return ~0U;
        std::string units;
        Unicode::AppendUnits(units, *value, static_cast<unsigned>(m_type->scale()));
        return static_cast<unsigned>(m_heap->put(usratom(m_type, units.data(), units.size())));
    }
    text get(unsigned token) const {
        const std::string_view bytes = m_heap->bytes(token == ~0U ? usrheap::null_token : token);
        if (!bytes.data()) return {};
        std::string buffer;
        return std::string(Unicode::ToUTF8(bytes, static_cast<unsigned>(m_type->scale()), buffer));
    }
    std::vector<text> values() const {
        std::vector<text> result;
        for (const unsigned token : m_tokens) result.push_back(get(token));
        return result;
    }

    input_column input() const {
        return {m_tokens.data(), m_heap.get(), sizeof(unsigned), static_cast<unsigned>(m_tokens.size()), 0};
    }
    output_column output(unsigned rows, unsigned char* flags = nullptr) {
        m_tokens.resize(rows, ~0U);
        return {m_tokens.data(), m_heap.get(), sizeof(unsigned), rows, flags};
    }
    usrheap* heap() const { return m_heap.get(); }
    std::vector<unsigned>& tokens() { return m_tokens; }

private:
    const usrtype* m_type;
    RefCntPtr<MemoryDataStream> m_stream;
    std::unique_ptr<usrheap> m_heap;
    std::vector<unsigned> m_tokens;
};

primitive::argument usr4_col{L"usr4", L"col"};
primitive::argument usr4_val{L"usr4", L"val"};

std::vector<int> compare(const wchar_t* operation, const text_column& a, const text_column& b) {
    const auto f = find_kernel<binary_func>(primitive::klassMap, operation, {usr4_col, usr4_col});
    std::vector<unsigned char> out(a.input().count);
    f(a.input().count, output_of(out), a.input(), b.input(), nullptr);
    return {out.begin(), out.end()};
}

TEST(TextComparison, FollowsTheCollation) {
    const std::vector<text> left{"a", "A", "", {}, {}, "b", "\xC3\xA9"};
    const std::vector<text> right{"A", "A", "x", "x", {}, "abc", "e"};
    for (const size_t scale : {1, 2, 4}) {
        const text_column a(left, scale), b(right, scale);
        EXPECT_EQ(compare(L"eq", a, b), (std::vector<int>{0, 1, 0, 128, 128, 0, 0})) << scale;
        EXPECT_EQ(compare(L"lt", a, b), (std::vector<int>{0, 0, 1, 128, 128, 0, 0})) << scale;
        EXPECT_EQ(compare(L"ge", a, b), (std::vector<int>{1, 1, 0, 128, 128, 1, 1})) << scale;
        EXPECT_EQ(compare(L"isdistinct", a, b), (std::vector<int>{1, 0, 1, 1, 0, 1, 1})) << scale;
    }
    const text_column folded(left, 2, L"en_US_CI"), other(right, 2, L"en_US_CI");
    EXPECT_EQ(compare(L"eq", folded, other), (std::vector<int>{1, 1, 0, 128, 128, 0, 0}));
    EXPECT_EQ(compare(L"isnotdistinct", folded, other), (std::vector<int>{1, 1, 0, 0, 1, 0, 0}));
    // Of two widths of code units.
    EXPECT_EQ(compare(L"eq", text_column(left, 1), text_column(right, 4)), (std::vector<int>{0, 1, 0, 128, 128, 0, 0}));
}

TEST(TextComparison, SelectsAgainstAConstantInOneHeapAndInAnother) {
    const auto select = find_kernel<binary_func>(primitive::klassSelect, L"eq", {usr4_col, usr4_val});
    text_column column({"x", "y", {}, "x", "", "yy"});
    const text_column constant({"x"}), null({text()});
    std::vector<unsigned> same_heap{column.put("x")};
    const input_column own{same_heap.data(), column.heap(), sizeof(unsigned), 1, 0};
    for (const input_column& wanted : {constant.input(), own}) {
        std::vector<unsigned> out(6);
        ASSERT_EQ(select(6, output_of(out), column.input(), wanted, nullptr), 2U);
        EXPECT_EQ((std::vector<unsigned>{out[0], out[1]}), (std::vector<unsigned>{0, 3}));
        const std::vector<unsigned> selected{1, 2, 3};
        ASSERT_EQ(select(3, output_of(out), column.input(), wanted, selected.data()), 1U);
        EXPECT_EQ(out[0], 3U);
    }
    std::vector<unsigned> out(6);
    EXPECT_EQ(select(6, output_of(out), column.input(), null.input(), nullptr), 0U);
}

TEST(TextHash, EqualTextsHashAlikeAndNullsToo) {
    const auto hash = find_kernel<unary_func>(primitive::klassMap, L"hash", {usr4_col});
    const text_column column({"Straw", "straw", "berry", {}, {}}, 2, L"en_US_CI");
    std::vector<unsigned> out(5);
    hash(5, output_of(out), column.input(), nullptr);
    EXPECT_EQ(out[0], out[1]);
    EXPECT_NE(out[0], out[2]);
    EXPECT_EQ(out[3], ~0U);
    EXPECT_EQ(out[4], ~0U);
    // In a selection the same rows hash the same.
    const std::vector<unsigned> selected{1, 4};
    std::vector<unsigned> some(5, 7);
    hash(2, output_of(some), column.input(), selected.data());
    EXPECT_EQ(some, (std::vector<unsigned>{7, out[1], 7, 7, out[4]}));
}

TEST(TextAggregates, KeepValuesInTheirOwnHeap) {
    const text_column column({"m", {}, "c", "x", "c", {}});
    const std::vector<unsigned> groups{0, 1, 0, 0, 1, 2};
    const auto run = [&](const wchar_t* operation) {
        const auto f = find_kernel<binary_func>(primitive::klassAggregate, operation, {usr4_col, {L"ulng", L"col"}});
        text_column out;
        f(6, out.output(3), column.input(), input_of(groups), nullptr);
        return out.values();
    };
    EXPECT_EQ(run(L"min"), (std::vector<text>{"c", "c", {}}));
    EXPECT_EQ(run(L"max"), (std::vector<text>{"x", "c", {}}));
    EXPECT_EQ(run(L"any"), (std::vector<text>{"m", "c", {}}));
    const auto count = find_kernel<binary_func>(primitive::klassAggregate, L"count", {usr4_col, {L"ulng", L"col"}});
    std::vector<bigint> counts(3);
    count(6, output_of(counts), column.input(), input_of(groups), nullptr);
    EXPECT_EQ(counts, (std::vector<bigint>{3, 1, 0}));
}

TEST(TextAggregates, CollectJoinsTheTextsOfAGroup) {
    const auto f = find_kernel<binary_func>(primitive::klassAggregate, L"collect", {usr4_col, {L"ulng", L"col"}});
    const text_column column({"m", {}, "c", "", "\xC3\xA9", {}});
    const std::vector<unsigned> groups{0, 1, 0, 0, 1, 2};
    for (const size_t scale : {1, 2, 4}) {
        text_column out({}, scale);
        f(6, out.output(3), column.input(), input_of(groups), nullptr);
        EXPECT_EQ(out.values(), (std::vector<text>{"m, c, ", "\xC3\xA9", {}}));
        // The next page goes on with what there is.
        const std::vector<unsigned> selected{0, 4, 5};
        const std::vector<unsigned> one(6, 1);
        f(3, out.output(3), column.input(), input_of(one, column_flags::constant), selected.data());
        EXPECT_EQ(out.values(), (std::vector<text>{"m, c, ", "\xC3\xA9, m, \xC3\xA9", {}}));
    }
}

TEST(TextGrouping, ChecksAndRunsCompareValuesNotTokens) {
    const text_column keys({"a", "b", "b", {}, {}, "c"});
    const text_column table({"b", "a", {}, "c"});  // other tokens for the same values
    const std::vector<unsigned> groups{1, 0, 1, 2, 0, 3};
    const auto check =
        find_kernel<ternary_func>(primitive::klassAggregate, L"check", {usr4_col, usr4_col, {L"ulng", L"col"}});
    std::vector<unsigned char> out(6);
    check(6, output_of(out), keys.input(), table.input(), input_of(groups), nullptr);
    EXPECT_EQ(out, (std::vector<unsigned char>{0, 0, 1, 0, 1, 0}));
    const auto run = find_kernel<unary_func>(primitive::klassMap, L"run", {usr4_col});
    std::fill(out.begin(), out.end(), 9);
    run(6, output_of(out), keys.input(), nullptr);
    EXPECT_EQ(out, (std::vector<unsigned char>{9, 1, 0, 1, 0, 1}));
}

TEST(TextMoves, GoFromHeapToHeapByValue) {
    const text_column source({"one", "two", {}});
    const std::vector<unsigned> index{1, 2, 0, 1, 7};
    const auto fetch = find_kernel<binary_func>(primitive::klassMap, L"fetch", {{L"ulng", L"col"}, usr4_col});
    text_column fetched({"zero"});
    fetch(5, fetched.output(5), input_of(index), source.input(), nullptr);
    EXPECT_EQ(fetched.values(), (std::vector<text>{"two", {}, "one", "two", {}}));
    // A change of width keeps the null and what the tokens mean.
    const auto widen = find_kernel<unary_func>(primitive::klassMap, L"usr8", {usr4_col});
    std::vector<unsigned long long> wide(3);
    widen(3, {wide.data(), source.heap(), 8, 3, nullptr}, source.input(), nullptr);
    EXPECT_EQ(source.get(static_cast<unsigned>(wide[1])), "two");
    EXPECT_EQ(wide[2], usrheap::null_token);
}

TEST(TextOrder, SortsAndMergesByValue) {
    std::mt19937 random(7);
    std::vector<text> values;
    for (unsigned i = 0; i < 400; ++i) {
        values.push_back(
            random() % 10 ? text(std::string(1, static_cast<char>('a' + random() % 26)) + std::to_string(random() % 50))
                          : text());
    }
    text_column column(values);
    std::vector<oid> index(values.size());
    for (unsigned i = 0; i < index.size(); ++i) index[i] = i;
    const auto sort = find_kernel<sort_func>(primitive::klassSort, L"desc", {{L"oid", L"col"}, usr4_col});
    sort(values.size(), output_of(index), column.output(static_cast<unsigned>(values.size())));
    std::vector<text> expected = values;
    std::sort(expected.begin(), expected.end(), std::greater<>());
    EXPECT_EQ(column.values(), expected);
    for (unsigned i = 0; i < index.size(); ++i) EXPECT_EQ(values[index[i]], expected[i]);

    const text_column a({{}, "b", "d"}), b({"a", "b", "c", "z"});
    const auto merge = find_kernel<merge_func>(primitive::klassMerge, L"asc", {usr4_col});
    std::vector<unsigned char> bits(1);
    EXPECT_EQ(merge(8, output_of(bits), a.input(), b.input()), (std::pair<unsigned, unsigned>{3, 3}));
    EXPECT_EQ(bits[0], 0b100101);  // null a b b c d

    const auto multimerge =
        find_kernel<multimerge_func>(primitive::klassMultimerge, L"asc", {{L"uchr", L"val"}, usr4_col});
    text_column out;
    unsigned positions[]{0, 0};
    const unsigned ends[]{3, 4};
    usrheap* heaps[]{a.heap(), b.heap()};
    const void* keys[]{a.input().data, b.input().data, nullptr};
    const output_column no_index{nullptr, nullptr, 1, 0, nullptr};
    EXPECT_EQ(multimerge(6, no_index, out.output(6), positions, ends, heaps, keys, nullptr), 6U);
    EXPECT_EQ(out.values(), (std::vector<text>{{}, "a", "b", "b", "c", "d"}));
}

// A function of one text, over a column and over a constant, with and without a selection.
std::vector<text> mapped(const wchar_t* operation, const std::vector<text>& values, size_t scale = 1,
                         const wchar_t* collation = L"binary") {
    const auto f = find_kernel<unary_func>(primitive::klassMap, operation, {usr4_col});
    const text_column in(values, scale, collation);
    text_column out({}, scale, collation);
    unsigned char flags = 0;
    f(static_cast<unsigned>(values.size()), out.output(static_cast<unsigned>(values.size()), &flags), in.input(),
      nullptr);
    EXPECT_EQ(!(flags & column_flags::not_null), std::count(values.begin(), values.end(), text()) > 0);
    return out.values();
}

TEST(TextFunctions, OfOneText) {
    for (const size_t scale : {1, 2, 4}) {
        EXPECT_EQ(mapped(L"upper", {"abc", "\xC3\xA9", {}, ""}, scale), (std::vector<text>{"ABC", "\xC3\x89", {}, ""}));
        EXPECT_EQ(mapped(L"lower", {"AbC"}, scale), (std::vector<text>{"abc"}));
        EXPECT_EQ(mapped(L"trim", {"  a b\t", "", "   "}, scale), (std::vector<text>{"a b", "", ""}));
        EXPECT_EQ(mapped(L"ltrim", {" a "}, scale), (std::vector<text>{"a "}));
        EXPECT_EQ(mapped(L"rtrim", {" a "}, scale), (std::vector<text>{" a"}));
        const auto length = find_kernel<unary_func>(primitive::klassMap, L"char_length", {usr4_col});
        const auto ascii = find_kernel<unary_func>(primitive::klassMap, L"ascii", {usr4_col});
        const text_column in({"h\xC3\xA9\xF0\x9F\x98\x80", "", {}}, scale);
        std::vector<int> out(3);
        length(3, output_of(out), in.input(), nullptr);
        EXPECT_EQ(out, (std::vector<int>{3, 0, datatraits<int>::null})) << scale;
        ascii(3, output_of(out), in.input(), nullptr);
        EXPECT_EQ(out, (std::vector<int>{'h', 0, datatraits<int>::null})) << scale;
    }
    EXPECT_EQ(mapped(L"upper", {"i"}, 2, L"tr"), (std::vector<text>{"\xC4\xB0"}));  // by the locale
}

TEST(TextFunctions, TakePartsByCharacters) {
    const std::string word = "a\xC3\xA9\xF0\x9F\x98\x80z";  // four characters of 1, 2, 4 and 1 bytes
    for (const size_t scale : {1, 2, 4}) {
        const text_column in({word, word, word, word, word, {}}, scale);
        const std::vector<int> counts{2, 0, 100, -1, datatraits<int>::null, 1};
        const auto part = [&](const wchar_t* operation) {
            const auto f = find_kernel<binary_func>(primitive::klassMap, operation, {usr4_col, {L"long", L"col"}});
            text_column out({}, scale);
            f(6, out.output(6), in.input(), input_of(counts), nullptr);
            return out.values();
        };
        EXPECT_EQ(part(L"left"), (std::vector<text>{"a\xC3\xA9", "", word, {}, {}, {}})) << scale;
        EXPECT_EQ(part(L"right"), (std::vector<text>{"\xF0\x9F\x98\x80z", "", word, {}, {}, {}})) << scale;
        EXPECT_EQ(part(L"mid"), (std::vector<text>{"\xF0\x9F\x98\x80z", word, "", {}, {}, {}})) << scale;
    }
    const auto left = find_kernel<binary_func>(primitive::klassMap, L"left", {usr4_col, {L"double", L"val"}});
    const text_column in({word});
    text_column out;
    left(1, out.output(1), in.input(), input_of(std::vector<double>{1.9}), nullptr);
    EXPECT_EQ(out.values(), (std::vector<text>{"a"}));
}

TEST(TextFunctions, SearchInTheCollation) {
    const text_column in({"Hello", "HELLO", "", {}, "hell"}, 2, L"en_US_CI");
    const text_column part({"ell"}, 2, L"en_US_CI"), start({"he"}, 2, L"en_US_CI"), empty({""}, 2, L"en_US_CI");
    const auto truth = [&](const wchar_t* operation, const text_column& wanted) {
        const auto f = find_kernel<binary_func>(primitive::klassMap, operation, {usr4_col, usr4_val});
        const auto s = find_kernel<binary_func>(primitive::klassSelect, operation, {usr4_col, usr4_val});
        std::vector<unsigned char> out(5);
        f(5, output_of(out), in.input(), wanted.input(), nullptr);
        std::vector<unsigned> positions(5), expected;
        for (unsigned i = 0; i < 5; ++i) {
            if (out[i] == 1) expected.push_back(i);
        }
        positions.resize(s(5, output_of(positions), in.input(), wanted.input(), nullptr));
        EXPECT_EQ(positions, expected);
        return std::vector<int>(out.begin(), out.end());
    };
    EXPECT_EQ(truth(L"contains", part), (std::vector<int>{1, 1, 0, 128, 1}));
    EXPECT_EQ(truth(L"startswith", start), (std::vector<int>{1, 1, 0, 128, 1}));
    EXPECT_EQ(truth(L"endswith", part), (std::vector<int>{0, 0, 0, 128, 1}));
    const auto find2 = find_kernel<binary_func>(primitive::klassMap, L"find2", {usr4_col, usr4_val});
    std::vector<int> places(5);
    find2(5, output_of(places), in.input(), part.input(), nullptr);
    EXPECT_EQ(places, (std::vector<int>{2, 2, 0, datatraits<int>::null, 2}));
    find2(5, output_of(places), in.input(), empty.input(), nullptr);
    EXPECT_EQ(places[0], 1);
}

TEST(TextFunctions, FindTheNthAndSplit) {
    const text_column in({"a-b-c", "", {}, "none"}), dash({"-"});
    const auto with_number = [&](const wchar_t* operation, bigint number, std::vector<int>* places) {
        const auto f =
            find_kernel<ternary_func>(primitive::klassMap, operation, {usr4_col, usr4_val, {L"bigint", L"val"}});
        const std::vector<bigint> numbers{number};
        text_column out;
        f(4, places ? output_of(*places) : out.output(4), in.input(), dash.input(), input_of(numbers), nullptr);
        return out.values();
    };
    constexpr int no = datatraits<int>::null;
    std::vector<int> places(4);
    with_number(L"find3", 3, &places);
    EXPECT_EQ(places, (std::vector<int>{4, 0, no, 0}));
    with_number(L"findnth", 2, &places);
    EXPECT_EQ(places, (std::vector<int>{4, 0, no, 0}));
    with_number(L"findnth", -2, &places);
    EXPECT_EQ(places, (std::vector<int>{2, 0, no, 0}));
    with_number(L"find3", datatraits<bigint>::null, &places);
    EXPECT_EQ(places, (std::vector<int>{no, no, no, no}));
    EXPECT_EQ(with_number(L"split", 2, nullptr), (std::vector<text>{"b", "", {}, ""}));
    EXPECT_EQ(with_number(L"split", -1, nullptr), (std::vector<text>{"c", "", {}, "none"}));
}

TEST(TextFunctions, JoinTexts) {
    const text_column narrow({"a", "\xC3\xA9", {}}, 1), wide({"b", "", "c"}, 4);
    const auto concat = find_kernel<binary_func>(primitive::klassMap, L"concat", {usr4_col, usr4_col});
    text_column out({}, 4);
    concat(3, out.output(3), narrow.input(), wide.input(), nullptr);
    EXPECT_EQ(out.values(), (std::vector<text>{"ab", "\xC3\xA9", {}}));
    const auto replace = find_kernel<ternary_func>(primitive::klassMap, L"replace", {usr4_col, usr4_val, usr4_val});
    const text_column in({"banana", {}});
    text_column replaced;
    replace(2, replaced.output(2), in.input(), text_column({"an"}).input(), text_column({"<>"}).input(), nullptr);
    EXPECT_EQ(replaced.values(), (std::vector<text>{"b<><>a", {}}));
}

TEST(TextFunctions, ChooseTheGreaterText) {
    const text_column a({"a", "z", {}}), b({"b", "y", "x"});
    const auto greatest = find_kernel<binary_func>(primitive::klassMap, L"greatest", {usr4_col, usr4_col});
    const auto least = find_kernel<binary_func>(primitive::klassMap, L"least", {usr4_col, usr4_col});
    text_column out;
    greatest(3, out.output(3), a.input(), b.input(), nullptr);
    EXPECT_EQ(out.values(), (std::vector<text>{"b", "z", {}}));
    least(3, out.output(3), a.input(), b.input(), nullptr);
    EXPECT_EQ(out.values(), (std::vector<text>{"a", "y", {}}));
}

template <class T>
std::vector<T> parsed(const wchar_t* operation, const std::vector<text>& values, size_t scale) {
    const auto f = find_kernel<unary_func>(primitive::klassMap, operation, {usr4_col});
    const text_column in(values, scale);
    std::vector<T> out(values.size());
    f(static_cast<unsigned>(values.size()), output_of(out), in.input(), nullptr);
    return out;
}

TEST(TextConversion, ReadsWhatTheTypesPrint) {
    constexpr int no = datatraits<int>::null;
    for (const size_t scale : {1, 2, 4}) {
        EXPECT_EQ(parsed<int>(L"long", {"12", " -7 ", "3.7", "-3.7", "x", "", {}, "99999999999", "1e3"}, scale),
                  (std::vector<int>{12, -7, 3, -3, no, no, no, no, 1000}));
        EXPECT_EQ(parsed<bigint>(L"to_int", {"9223372036854775807", "t\xC3\xA9"}, scale),
                  (std::vector<bigint>{9223372036854775807, datatraits<bigint>::null}));
        const auto reals = parsed<double>(L"to_real", {"0.5", "1e300", "abc"}, scale);
        EXPECT_EQ(reals[0], 0.5);
        EXPECT_EQ(reals[1], 1e300);
        EXPECT_TRUE(is_null(reals[2]));
        EXPECT_EQ(parsed<date>(L"to_date", {"2024-02-29", "2023-02-29"}, scale),
                  (std::vector<date>{date::gregoriandate(2024, 2, 29), datatraits<date>::null}));
        EXPECT_EQ(parsed<duration>(L"to_duration", {"-1:00:00"}, scale)[0], duration{-ticks_per_hour});
    }
    const auto print = [](const wchar_t* type, const input_column& in, size_t scale) {
        const auto f = find_kernel<unary_func>(primitive::klassMap, L"to_str", {{type, L"col"}});
        text_column out({}, scale);
        f(in.count, out.output(in.count), in, nullptr);
        return out.values();
    };
    const std::vector<short> shorts{5, -32767, datatraits<short>::null, 5};
    const std::vector<double> doubles{0.5, -1e30};
    const std::vector<datetime> moments{datetime::at(date::gregoriandate(2024, 2, 29), ticks_per_hour + 1)};
    for (const size_t scale : {1, 2}) {
        EXPECT_EQ(print(L"short", input_of(shorts), scale), (std::vector<text>{"5", "-32767", {}, "5"}));
        EXPECT_EQ(print(L"double", input_of(doubles), scale), (std::vector<text>{"0.5", "-1e+30"}));
        EXPECT_EQ(print(L"datetime", input_of(moments), scale), (std::vector<text>{"2024-02-29 01:00:00.0001"}));
    }
}

TEST(TextConversion, NamesDaysAndCharacters) {
    const auto dayname = find_kernel<unary_func>(primitive::klassMap, L"dayname", {{L"date", L"col"}});
    const auto monthname = find_kernel<unary_func>(primitive::klassMap, L"monthname", {{L"datetime", L"col"}});
    const std::vector<date> days{date::gregoriandate(2023, 8, 13), datatraits<date>::null};
    const std::vector<datetime> moments{datetime::at(days[0]), datatraits<datetime>::null};
    text_column out;
    dayname(2, out.output(2), input_of(days), nullptr);
    EXPECT_EQ(out.values(), (std::vector<text>{"Sunday", {}}));
    monthname(2, out.output(2), input_of(moments), nullptr);
    EXPECT_EQ(out.values(), (std::vector<text>{"August", {}}));
    // In the locale of the result's collation; beyond the calendar it is the last day of it.
    const std::vector<date> late{{3000000000u}, {300000000u}};
    for (const auto& [collation, sunday, august] : {std::tuple{L"de", "Sonntag", "August"},
                                                    {L"fr_FR", "dimanche", "ao\xC3\xBBt"},
                                                    {L"cs_CI", "ned\xC4\x9Ble", "srpen"}}) {
        text_column names({}, 2, collation);
        dayname(2, names.output(2), input_of(days), nullptr);
        EXPECT_EQ(names.values(), (std::vector<text>{sunday, {}}));
        monthname(2, names.output(2), input_of(moments), nullptr);
        EXPECT_EQ(names.values(), (std::vector<text>{august, {}}));
        dayname(2, names.output(2), input_of(late), nullptr);
        EXPECT_EQ(names.values()[0], names.values()[1]);
    }
    const auto chr = find_kernel<unary_func>(primitive::klassMap, L"chr", {{L"double", L"col"}});
    const std::vector<double> codes{65, 233, 0xD800, -1, 1e300};
    chr(5, out.output(5), input_of(codes), nullptr);
    EXPECT_EQ(out.values(), (std::vector<text>{"A", "\xC3\xA9", {}, {}, {}}));
}

}  // namespace
}  // namespace qve::test
