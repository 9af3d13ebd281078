#include "types/usrtype.h"

#include <gtest/gtest.h>

#include <thread>

#include "system/QuillonException.h"
#include "tests/types/text_atoms.h"
#include "types/builtin.h"
#include "types/collation.h"
#include "types/scalartype.h"
#include "types/usrheap.h"

namespace qve {
namespace {

using test::printed;
using test::read;
using test::text;

int status_of(const usrprops& properties) {
    try {
        usrtype::resolve(properties);
    } catch (const QuillonException& fault) {
        return fault.GetStatus();
    }
    return 0;
}

usrprops varchar_props(std::initializer_list<std::pair<usrpropkey, const wchar_t*>> more) {
    usrprops properties{{usrpropkey::factory, L"varchar"}};
    for (const auto& [key, value] : more) properties.set(key, value);
    return properties;
}

TEST(Types, AtomsAreResolvedOnce) {
    const usrtype* type = builtin::usrtypeof<long long>();
    EXPECT_EQ(type, builtin::primitive_type(L"bigint"));
    EXPECT_EQ(type, usrtype::resolve(type->properties()));
    EXPECT_EQ(type->name(), L"bigint");
    EXPECT_EQ(type->datatype(), L"integer");
    EXPECT_EQ(type->size(), 8U);
    EXPECT_TRUE(type->fixed());
    EXPECT_EQ(builtin::usrtypeof<date>()->size(), 4U);
    EXPECT_EQ(builtin::usrtypeof<bit>()->GetDataType(), DataType::boolean);
    EXPECT_EQ(builtin::usrtypeof<unsigned short>()->datatype(), L"index");
    EXPECT_EQ(usrtype::DecodeDataType(L"duration"), DataType::duration);
    EXPECT_EQ(usrtype::DecodeDataType(L"anything"), DataType::usr);
}

TEST(Types, ThreadsResolveOneObject) {
    std::vector<const usrtype*> found(4);
    {
        std::vector<std::jthread> threads;
        for (auto& mine : found) {
            threads.emplace_back([&mine] { mine = varchar::usrtypeof(4321, 2, L"en_US_CI"); });
        }
    }
    for (const usrtype* mine : found) EXPECT_EQ(mine, found[0]);
}

TEST(Types, TextTypesAreNormalised) {
    const usrtype* clob = usrtype::resolve(varchar_props({}));
    EXPECT_EQ(clob, usrtype::resolve(varchar_props({{usrpropkey::scale, L"2"}, {usrpropkey::collation, L"binary"}})));
    EXPECT_EQ(clob->name(), L"clob(2) collate binary");
    EXPECT_EQ(clob->size(), 4ULL * varchar::clob_precision);

    const usrtype* capped =
        usrtype::resolve(varchar_props({{usrpropkey::precision, L"20"}, {usrpropkey::size, L"100"}}));
    EXPECT_EQ(capped->name(), L"varchar(20,2) collate binary");
    EXPECT_EQ(capped->size(), 80U);
    EXPECT_EQ(usrtype::resolve(varchar_props({{usrpropkey::size, L"100"}}))->precision(), 63);
    EXPECT_EQ(usrtype::resolve(varchar_props({{usrpropkey::size, L"300"}}))->precision(), 16383);
    EXPECT_EQ(usrtype::resolve(varchar_props({{usrpropkey::size, L"70000"}}))->precision(), 0x3FFFFFFF);
    // A size beyond 32 bits rules nothing, and a precision stands uncapped with it.
    EXPECT_EQ(
        usrtype::resolve(varchar_props({{usrpropkey::precision, L"2000000000"}, {usrpropkey::size, L"9999999999"}}))
            ->precision(),
        2000000000);
    EXPECT_EQ(varchar::usrtypeof(5, 1, L"de")->name(), L"varchar(5,1) collate de");
}

TEST(Types, FaultsHaveTheirNumbers) {
    EXPECT_EQ(status_of({}), 40688);
    EXPECT_EQ(status_of({{usrpropkey::factory, L"nothing"}}), 40689);
    EXPECT_EQ(status_of({{usrpropkey::factory, L"builtin"}}), 40660);
    EXPECT_EQ(status_of({{usrpropkey::factory, L"builtin"}, {usrpropkey::builtin, L"nibble"}}), 40689);
    EXPECT_EQ(status_of(varchar_props({{usrpropkey::scale, L"3"}})), 40691);
    EXPECT_EQ(status_of(varchar_props({{usrpropkey::collation, L"xx"}})), 40662);
}

TEST(Types, BlobsAreNamedBySize) {
    EXPECT_EQ(usrtype::resolve({{usrpropkey::factory, L"usr"}})->name(), L"blob");
    const usrtype* blob = usrtype::resolve({{usrpropkey::factory, L"usr"}, {usrpropkey::size, L"1000"}});
    EXPECT_EQ(blob->name(), L"usr(1000)");
    EXPECT_EQ(blob->heap(nullptr)->prefix_width(), 2U);
}

TEST(Types, CommonTextTypes) {
    const std::vector<const usrtype*> some{varchar::usrtypeof(10, 1), varchar::usrtypeof(30, 2, L"de"),
                                           varchar::usrtypeof(20, 1, L"fr_FR")};
    EXPECT_EQ(varchar::maxtype(some.begin(), some.end())->name(), L"varchar(30,2) collate binary");
    EXPECT_EQ(varchar::sumtype(some.begin(), some.end())->name(), L"varchar(60,2) collate binary");
    const std::vector<const usrtype*> long_ones{varchar::usrtypeof(varchar::clob_precision, 2, L"de"),
                                                varchar::usrtypeof(varchar::clob_precision, 2)};
    EXPECT_EQ(varchar::sumtype(long_ones.begin(), long_ones.end())->name(), L"clob(2) collate de");
}

TEST(Atoms, NullAndEmptyDiffer) {
    const usrtype* type = varchar::usrtypeof(20, 1);
    const usratom null(type);
    const usratom empty(type, "", 0);
    const usratom from_nowhere(type, "x", 0, true);
    EXPECT_TRUE(null.isnull());
    EXPECT_FALSE(empty.isnull());
    EXPECT_FALSE(from_nowhere.isnull());
    EXPECT_NE(type->hash(null), type->hash(empty));
    EXPECT_EQ(type->compare(null, empty), -1);
    EXPECT_EQ(type->compare(empty, null), 1);
    EXPECT_EQ(type->compare(empty, from_nowhere), 0);
    EXPECT_EQ(type->compare(null, null), 0);
}

TEST(Atoms, OwnTheirBytesThroughCopiesAndMoves) {
    const usrtype* type = varchar::usrtypeof(20, 1);
    auto source = std::make_unique<usratom>(type, "abc", 3);
    auto empty = std::make_unique<usratom>(type, "", 0);
    const usratom copy(*source);
    usratom assigned;
    assigned = *source;
    const usratom moved(std::move(*source));
    const usratom empty_copy(*empty);
    source.reset();
    empty.reset();
    EXPECT_EQ(copy.bytes(), "abc");
    EXPECT_EQ(assigned.bytes(), "abc");
    EXPECT_EQ(moved.bytes(), "abc");
    EXPECT_FALSE(empty_copy.isnull());
    EXPECT_EQ(empty_copy.data(), reinterpret_cast<const char*>(&empty_copy));

    // A part of its own bytes.
    assigned.assign(type, assigned.data() + 1, 2);
    EXPECT_EQ(assigned.bytes(), "bc");
    assigned = copy;
    usratom& itself = assigned;  // by another name, as compilers warn of this one
    assigned = std::move(itself);
    EXPECT_EQ(assigned.bytes(), "abc");

    std::vector<char> buffer{'x', 'y'};
    assigned.swap(type, buffer);
    EXPECT_EQ(assigned.bytes(), "xy");
}

TEST(Atoms, StoredNullsAreNull) {
    const unsigned char full = 255;
    EXPECT_TRUE(usratom(builtin::usrtypeof<unsigned char>(), reinterpret_cast<const char*>(&full), 1).isnull());
    EXPECT_TRUE(usratom(static_cast<char>(-128)).isnull());
    EXPECT_TRUE(usratom(std::bit_cast<float>(0x7FC10000U)).isnull());
    EXPECT_FALSE(usratom(std::bit_cast<float>(0x7FC00000U)).isnull());
    EXPECT_FALSE(usratom(std::numeric_limits<double>::quiet_NaN()).isnull());
}

TEST(Text, ValuesPrintAndReadBack) {
    EXPECT_EQ(printed(usratom(bit{1})), "t");
    EXPECT_EQ(printed(usratom(bit{7})), "7");
    EXPECT_EQ(printed(usratom(static_cast<char>(65))), "65");
    EXPECT_EQ(printed(usratom(static_cast<char>(-128))), "NULL");
    EXPECT_EQ(printed(usratom(0.1)), "0.10000000000000001");
    EXPECT_EQ(printed(usratom(0.1F)), "0.100000001");
    EXPECT_EQ(printed(usratom(1e300)), "1.0000000000000001e+300");
    EXPECT_EQ(printed(usratom(-17LL)), "-17");
    for (const double value : {0.1, 1e-300, 123456789.123456789, -2.5e17, std::numeric_limits<double>::infinity(),
                               std::numeric_limits<double>::denorm_min()}) {
        EXPECT_EQ(static_cast<double>(read(builtin::usrtypeof<double>(), printed(usratom(value)))), value);
    }
    const std::string odd = std::string("a'b\\c\n\t\r", 8) + '\0' + "\xC3\xA4";
    for (const size_t scale : {1, 2, 4}) {
        const usratom atom = text(odd, scale);
        EXPECT_EQ(printed(atom), "'a\\'b\\\\c\\n\\t\\r\\0\xC3\xA4'");
        EXPECT_EQ(read(atom.type(), "  " + printed(atom)).bytes(), atom.bytes());
    }
}

TEST(Text, NullsAreRecognised) {
    for (const usrtype* type : {builtin::usrtypeof<int>(), builtin::usrtypeof<bit>(), varchar::usrtypeof(20, 2),
                                builtin::usrtypeof<datetime>()}) {
        std::istringstream stream("nonsense");
        usratom atom;
        type->fromstream(stream, atom);
        EXPECT_TRUE(atom.isnull());
        EXPECT_FALSE(stream.fail());
        std::string rest;
        stream >> rest;
        EXPECT_EQ(rest, "ense");
        EXPECT_TRUE(read(type, "").isnull());
    }
    std::istringstream stream(" abc");
    usratom atom;
    varchar::usrtypeof(20, 1)->fromstream(stream, atom);
    EXPECT_TRUE(atom.isnull() && stream.fail());
    EXPECT_EQ(read(varchar::usrtypeof(20, 1), "'open").bytes(), "open");
}

TEST(Text, BuffersUseTheParsersOfImport) {
    usratom atom;
    EXPECT_FALSE(builtin::usrtypeof<long long>()->frombuffer(atom, 1, 6, "x1,234y"));
    EXPECT_EQ(static_cast<long long>(atom), 1234);
    EXPECT_TRUE(builtin::usrtypeof<long long>()->frombuffer(atom, 0, 3, "12x"));
    EXPECT_TRUE(atom.isnull());
    EXPECT_FALSE(builtin::usrtypeof<bit>()->frombuffer(atom, 0, 1, "t"));
    EXPECT_EQ(static_cast<bit>(atom), bit{1});
    EXPECT_FALSE(varchar::usrtypeof(20, 2)->frombuffer(atom, 0, 5, "'abc'"));
    EXPECT_EQ(test::utf8(atom), "abc");
    EXPECT_TRUE(varchar::usrtypeof(20, 2)->frombuffer(atom, 0, 3, "abc"));
}

TEST(Cast, ConvertsThroughText) {
    EXPECT_EQ(static_cast<int>(text("3.7")), 3);
    EXPECT_EQ(static_cast<int>(text("-3.7", 2)), -3);
    EXPECT_TRUE(is_null(static_cast<int>(text("abc"))));
    EXPECT_TRUE(is_null(static_cast<int>(text("12 apples"))));
    EXPECT_TRUE(is_null(static_cast<int>(usratom(1e10))));
    EXPECT_TRUE(is_null(static_cast<int>(usratom(std::numeric_limits<double>::quiet_NaN()))));
    EXPECT_EQ(static_cast<long long>(usratom(1e15)), 1000000000000000LL);
    EXPECT_EQ(static_cast<double>(usratom(42)), 42.0);
    EXPECT_TRUE(is_null(static_cast<char>(usratom(128))));
    EXPECT_EQ(static_cast<datetime>(usratom(date::mindate)), datetime::at(date::mindate));
    EXPECT_EQ(static_cast<date>(usratom(datetime::at(date::mindate, 5))), date::mindate);
    EXPECT_EQ(static_cast<int>(usratom(bit{1})), 1);
    EXPECT_EQ(static_cast<bit>(usratom(0.5)), bit{1});
    EXPECT_EQ(static_cast<date>(text("1990-01-01")), date::mindate);
    EXPECT_TRUE(is_null(static_cast<date>(text("1990-01-01x"))));
}

TEST(Cast, ToText) {
    usratom result;
    const usrtype* two = varchar::usrtypeof(2, 1);
    two->cast(result, usratom(-1234567890123LL));
    EXPECT_EQ(result.bytes(), "-1");
    two->cast(result, text("\xC3\xA4"
                           "bcd"));
    EXPECT_EQ(result.bytes(),
              "\xC3\xA4"
              "b");
    EXPECT_TRUE(two->validate(result));
    // Where only bytes are limited, never through the middle of a character.
    const usrtype* eight =
        usrtype::resolve({{usrpropkey::factory, L"varchar"}, {usrpropkey::scale, L"1"}, {usrpropkey::size, L"8"}});
    eight->cast(result, text("abcdefg\xC3\xA4"));
    EXPECT_EQ(result.bytes().substr(0, 2), "ab");
    EXPECT_TRUE(eight->validate(result));
    varchar::usrtypeof(20, 2)->cast(result, text("\xF0\x9F\x98\x80!", 4));
    EXPECT_EQ(result.length(), 6U);
    EXPECT_EQ(test::utf8(result), "\xF0\x9F\x98\x80!");
    varchar::usrtypeof(1, 2)->cast(result, text("a\xF0\x9F\x98\x80", 1));
    EXPECT_EQ(test::utf8(result), "a");
    varchar::usrtypeof(20, 1)->cast(result, usratom(builtin::usrtypeof<int>()));
    EXPECT_TRUE(result.isnull());
}

TEST(Validate, LengthsCountInCharacters) {
    const usrtype* three = varchar::usrtypeof(3, 1);
    EXPECT_TRUE(three->validate(text("\xE2\x82\xAC\xE2\x82\xAC\xE2\x82\xAC")));
    EXPECT_FALSE(three->validate(text("abcd")));
    EXPECT_FALSE(three->validate(text("abc", 2)));
    EXPECT_FALSE(three->validate(usratom(5)));
    EXPECT_TRUE(three->validate(usratom(varchar::usrtypeof(9, 2))));
}

template <class T>
class AtomTypes : public testing::Test {};
using all_atoms = testing::Types<bit, char, short, int, long long, unsigned char, unsigned short, unsigned,
                                 unsigned long long, float, double, date, datetime, duration>;
TYPED_TEST_SUITE(AtomTypes, all_atoms);

template <class T>
std::vector<T> samples() {
    using raw_type = typename datatraits<T>::raw;
    std::vector<T> values{datatraits<T>::null,
                          from_raw<T>(raw_type(0)),
                          from_raw<T>(raw_type(1)),
                          from_raw<T>(raw_type(77)),
                          from_raw<T>(std::numeric_limits<raw_type>::max()),
                          from_raw<T>(std::numeric_limits<raw_type>::lowest())};
    if constexpr (std::is_floating_point_v<T>) values.push_back(std::numeric_limits<T>::infinity());
    return values;
}

TYPED_TEST(AtomTypes, VectorsAgreeWithScalars) {
    using T = TypeParam;
    const usrtype* type = builtin::usrtypeof<T>();
    const std::vector<T> values = samples<T>();
    const auto n = static_cast<unsigned>(values.size());
    const input_column column{values.data(), nullptr, sizeof(T), n, 0};
    std::vector<unsigned> hashes(n, 12345);
    type->hash(n, {hashes.data(), nullptr, 4, n, nullptr}, column, nullptr);
    const std::vector<T> reversed(values.rbegin(), values.rend());
    std::vector<char> orders(n, 99);
    type->compare(n, {orders.data(), nullptr, 1, n, nullptr}, column, {reversed.data(), nullptr, sizeof(T), n, 0},
                  nullptr);
    for (unsigned i = 0; i < n; ++i) {
        usratom left;
        usratom right;
        type->get(column, i, left);
        type->get({reversed.data(), nullptr, sizeof(T), n, 0}, i, right);
        EXPECT_EQ(hashes[i], type->hash(left));
        EXPECT_EQ(orders[i], type->compare(left, right)) << i;
        EXPECT_EQ(type->compare(right, left), -type->compare(left, right));
        EXPECT_EQ(left.isnull(), is_null(values[i]));
    }
    EXPECT_EQ(type->compare(type->null(), usratom(type, reinterpret_cast<const char*>(&values[1]), sizeof(T))), -1);

    const unsigned chosen[] = {1, 3};
    std::vector<unsigned> some(n, 12345);
    type->hash(2, {some.data(), nullptr, 4, n, nullptr}, column, chosen);
    EXPECT_EQ(some[0], 12345U);
    EXPECT_EQ(some[1], hashes[1]);
    EXPECT_EQ(some[3], hashes[3]);
}

TYPED_TEST(AtomTypes, RowsAndTextsKeepTheValue) {
    using T = TypeParam;
    const usrtype* type = builtin::usrtypeof<T>();
    for (const T value : samples<T>()) {
        const usratom atom(type, reinterpret_cast<const char*>(&value), sizeof(T));
        // One byte off, as in a packed buffer.
        char row[2 * sizeof(T) + 1] = {};
        type->put({row + 1, nullptr, sizeof(T), 2, nullptr}, 1, atom);
        usratom back;
        type->get({row + 1, nullptr, sizeof(T), 2, 0}, 1, back);
        EXPECT_EQ(back.bytes(), atom.bytes());
        // Only days of the calendar, and only truth values, have a text that reads back.
        if constexpr (std::is_arithmetic_v<T> || std::is_same_v<T, duration>) {
            EXPECT_EQ(type->compare(read(type, printed(atom)), atom), 0) << printed(atom);
        }
    }
    EXPECT_TRUE(type->null().isnull());
    EXPECT_EQ(type->null().length(), sizeof(T));
    usratom wrong;
    long long other_width = 5;
    type->get({&other_width, nullptr, 3, 1, 0}, 0, wrong);
    EXPECT_TRUE(wrong.isnull());
}

TEST(Hash, KnownValues) {
    // The mixes, step by step.
    unsigned x = 1;
    x = ~x + (x << 15);
    x ^= x >> 12;
    x *= 5;
    x ^= x >> 4;
    x *= 2057;
    x ^= x >> 16;
    EXPECT_EQ(builtin::usrtypeof<int>()->hash(usratom(1)), x);
    EXPECT_EQ(builtin::usrtypeof<char>()->hash(usratom(static_cast<char>(1))), x);
    const usrtype* blob = usrtype::resolve({{usrpropkey::factory, L"usr"}, {usrpropkey::size, L"1000"}});
    EXPECT_EQ(blob->hash(usratom(blob)), 0xFFFFFFFFU);
    EXPECT_EQ(varchar::usrtypeof(20, 1)->hash(text("Four score and seven")),
              blob->hash(usratom(blob, "Four score and seven", 20)));
}

}  // namespace
}  // namespace qve
