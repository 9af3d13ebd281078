#include <gmock/gmock.h>

#include <bit>
#include <cstring>
#include <functional>
#include <limits>
#include <random>
#include <set>

#include "primitives/pack.h"
#include "storage/AffineDataStream.h"
#include "storage/Column.h"
#include "storage/DictionaryDataStream.h"
#include "storage/EncodingFactory.h"
#include "storage/FORDataStream.h"
#include "storage/IntegerStatistics.h"
#include "storage/RunLengthDataStream.h"
#include "storage/bit_unpacking.h"
#include "storage/integer_width.h"
#include "storage/status.h"
#include "storage/stream/FileDataStream.h"
#include "storage/stream/MemoryDataStream.h"
#include "tests/storage/storage_fixture.h"

namespace qve {
namespace {

using testing::HasSubstr;
using Mask = EncodingFactory::Mask;

constexpr const wchar_t* typeNames[] = {L"tiny", L"short", L"long", L"bigint"};

const wchar_t* type_of(unsigned width) {
    return typeNames[width == 1 ? 0 : width == 2 ? 1 : width == 4 ? 2 : 3];
}

// Values as cells of a width; what does not fit wraps.
std::string cells_of(const std::vector<int64_t>& values, unsigned width) {
    std::string cells(values.size() * width, 0);
    for (size_t i = 0; i < values.size(); ++i) store_integer(cells.data() + i * width, width, values[i]);
    return cells;
}

std::string contents(DataStream& stream, uint64_t step = 1) {
    std::string bytes;
    while (bytes.size() < stream.GetSize()) {
        const uint64_t limit = stream.Seek(bytes.size(), step);
        bytes.append(stream.GetInput(0), limit);
    }
    return bytes;
}

// Generators of columns; each asks for one of the encodings when all are allowed.
struct Pattern {
    const char* name;
    const wchar_t* encoding;
    std::function<int64_t(uint64_t row, std::mt19937_64& random)> value;
};

std::vector<Pattern> patterns() {
    const auto up_to = [](std::mt19937_64& random, int64_t n) {
        return static_cast<int64_t>(random() % static_cast<uint64_t>(n + 1));
    };
    return {
        {"line", L"affine", [](uint64_t row, auto&) { return 7 + 3 * static_cast<int64_t>(row); }},
        {"constant", L"rle", [](uint64_t, auto&) { return int64_t{5}; }},
        {"narrow", L"for", [=](uint64_t, auto& random) { return up_to(random, 6) - 3; }},
        {"ascending", L"delta",
         [=, sum = std::make_shared<int64_t>(0)](uint64_t, auto& random) { return *sum += 1 + up_to(random, 6); }},
        {"codes", L"dict",
         [=](uint64_t, auto& random) {
             return static_cast<int64_t>(static_cast<uint64_t>(up_to(random, 10)) * 0x1234567890ABCDEF) ^
                    (up_to(random, 1) << 20);
         }},
        {"runs", L"rle", [](uint64_t row, auto&) { return static_cast<int64_t>((row / 97) * 0x9E3779B97F4A7C15u); }},
        {"noise", L"none", [](uint64_t, auto& random) { return static_cast<int64_t>(random()); }},
    };
}

class EncodingTest : public StorageTest {
protected:
    static RefCntPtr<Column> NewColumn(unsigned width) {
        return MakeRef<Column>(builtin::primitive_props(type_of(width)), MakeRef<TempFileDataStream>());
    }
    // Appends cells in pieces of random lengths, as pages come.
    static RefCntPtr<DataStream> Write(EncodingFactory& factory, const std::string& cells, unsigned width,
                                       std::mt19937_64& random, bool finalise = true) {
        RefCntPtr<DataStream> stream = MakeRef<TempFileDataStream>();
        for (uint64_t done = 0; done < cells.size();) {
            const uint64_t rows = 1 + random() % (random() % 8 == 0 ? 5000 : 1024);
            const uint64_t bytes = std::min(rows * width, cells.size() - done);
            stream = factory.AppendStream(stream, cells.data() + done, bytes);
            done += bytes;
        }
        return finalise ? factory.FinaliseStream(stream) : stream;
    }
    // The stored bytes of a finalised stream.
    static std::string Stored(const RefCntPtr<DataStream>& stream) {
        return contents(*EncodingFactory::GetStorageStream(stream), 1);
    }
    static RefCntPtr<DataStream> Reopen(const std::string& stored, std::wstring_view encoding) {
        return EncodingFactory::CreateEncodingStream(MakeRef<MemoryDataStream>(stored.data(), stored.size()), encoding);
    }
};

TEST_F(EncodingTest, UnpackingInvertsPackingForAllWidthsAndBits) {
    std::mt19937_64 random(1);
    for (unsigned bits = 1; bits <= maximal_packed_bits; ++bits) {
        constexpr unsigned groups = 3;
        std::vector<unsigned> values(groups * 32);
        for (unsigned& value : values) value = static_cast<unsigned>(random()) & ((1u << bits) - 1);
        // One group of room behind: with it the wide loads are used to the end, without it the last groups go one by
        // one.
        std::vector<unsigned> packed(groups * bits + 8);
        pack_func_ulng_col_ulng_col(bits)(groups * 32, packed.data(), values.data());
        for (const unsigned width : {1u, 2u, 4u, 8u}) {
            const uint64_t base = random();
            for (const unsigned slack : {0u, 16u}) {
                std::vector<char> out(values.size() * width + 1, 'e');
                std::vector<char> in(groups * bits * 4 + slack + 1);
                std::memcpy(in.data() + 1, packed.data(), in.size() - 1);  // not aligned
                decode_functype_bits(width, bits)(in.data() + 1, in.data() + in.size(), groups, base, out.data());
                for (size_t i = 0; i < values.size(); ++i) {
                    ASSERT_EQ(load_integer(out.data() + i * width, width),
                              wrap_integer(static_cast<int64_t>(base + values[i]), width))
                        << bits << " bits, width " << width << ", value " << i << ", slack " << slack;
                }
                ASSERT_EQ(out.back(), 'e');
            }
        }
    }
    EXPECT_EQ(StatusOf([] { decode_functype_bits(4, 0); }), status::FORDataStream_decode_functype_bits);
    EXPECT_EQ(StatusOf([] { decode_functype_bits(4, 25); }), status::FORDataStream_decode_functype_bits);
    EXPECT_EQ(StatusOf([] { decode_functype_bits(3, 5); }), status::FORDataStream_decode_functype_bits);
}

// Every pattern, width and single encoding against the plain cells, written in pieces and read back by random seeks.
TEST_F(EncodingTest, EncodedStreamsReadLikePlainOnes) {
    std::mt19937_64 random(2);
    for (const Pattern& pattern : patterns()) {
        for (const unsigned width : {1u, 2u, 4u, 8u}) {
            for (const uint64_t mask : {Mask::RunLength, Mask::FrameOfReference, Mask::Delta, Mask::Dictionary,
                                        Mask::Affine, Mask::All, Mask::None}) {
                for (const uint64_t rows :
                     {uint64_t{0}, uint64_t{1}, uint64_t{45}, uint64_t{3000}, 65536 + random() % 9000}) {
                    if (rows > 65536 && mask != Mask::All && random() % 4 != 0) continue;  // they take long
                    std::vector<int64_t> values(rows);
                    for (uint64_t row = 0; row < rows; ++row) values[row] = pattern.value(row, random);
                    const std::string cells = cells_of(values, width);
                    const auto column = NewColumn(width);
                    const auto factory = EncodingFactory::CreateFactory(mask, *column, rows % 2 ? 1024 : 100);
                    auto stream = Write(*factory, cells, width, random);
                    const std::wstring encoding(EncodingFactory::GetEncodingType(stream.get()));
                    SCOPED_TRACE(testing::Message()
                                 << pattern.name << ", width " << width << ", mask " << mask << ", rows " << rows
                                 << ", " << std::string(encoding.begin(), encoding.end()));
                    ASSERT_EQ(stream->GetSize(), cells.size());
                    ASSERT_EQ(contents(*stream, width), cells);
                    ASSERT_LE(EncodingFactory::GetStorageStream(stream)->GetSize(), cells.size());

                    const auto reopened = Reopen(Stored(stream), encoding);
                    const auto fork = reopened->Fork(true);
                    ASSERT_EQ(reopened->GetSize(), encoding == L"none" ? Stored(stream).size() : cells.size());
                    for (int i = 0; i < 20; ++i) {
                        const uint64_t position = random() % (rows + 1) * width;
                        const uint64_t minimum = random() % (i % 4 == 0 ? cells.size() + 1 : 9000);
                        for (const auto& reader : {stream, RefCntPtr<DataStream>(reopened), fork}) {
                            uint64_t limit = reader->Seek(position, minimum);
                            // What was sought and not looked at may be sought again.
                            if (i % 3 == 0) limit = reader->Seek(position, minimum / 2 / width * width);
                            ASSERT_GE(limit, std::min(minimum, cells.size() - position) / (i % 3 == 0 ? 4 : 1));
                            ASSERT_EQ(reader->GetCursor(), position);
                            ASSERT_EQ(std::memcmp(reader->GetInput(0), cells.data() + position, limit), 0);
                        }
                    }
                }
            }
        }
    }
}

TEST_F(EncodingTest, TheCheapestEncodingIsChosen) {
    std::mt19937_64 random(3);
    for (const Pattern& pattern : patterns()) {
        std::vector<int64_t> values(70000);
        for (uint64_t row = 0; row < values.size(); ++row) values[row] = pattern.value(row, random);
        const auto column = NewColumn(8);
        const auto factory = EncodingFactory::CreateFactory(Mask::All, *column);
        const auto stream = Write(*factory, cells_of(values, 8), 8, random);
        EXPECT_EQ(EncodingFactory::GetEncodingType(stream.get()), pattern.encoding) << pattern.name;
        EXPECT_EQ(EncodingFactory::GetEncodingStream(stream.get()) == nullptr,
                  pattern.encoding == std::wstring(L"none"));
        column->SetData(stream);
        EXPECT_EQ(column->HasProperty(usrpropkey::encoding), pattern.encoding != std::wstring(L"none"));
    }
}

TEST_F(EncodingTest, StoredFormsAreAsDocumented) {
    std::mt19937_64 random(4);
    const auto store = [&](const std::vector<int64_t>& values, uint64_t mask) {
        const auto column = NewColumn(2);
        return Stored(Write(*EncodingFactory::CreateFactory(mask, *column, 32), cells_of(values, 2), 2, random));
    };
    const auto number = [](const std::string& bytes, size_t at, size_t width) {
        uint64_t value = 0;
        std::memcpy(&value, bytes.data() + at, width);
        return value;
    };
    std::vector<int64_t> values(100);
    for (int64_t i = 0; i < 100; ++i) values[i] = 1000 + i % 8;
    const std::string frame = store(values, Mask::FrameOfReference);
    ASSERT_EQ(frame.size(), 32 + 4 * 32 * 3 / 8u);
    EXPECT_EQ(number(frame, 0, 8), 200u);
    EXPECT_EQ(number(frame, 8, 8), 32u);
    EXPECT_EQ(number(frame, 16, 4), 32u);
    EXPECT_EQ(number(frame, 20, 2), 0u);
    EXPECT_EQ(number(frame, 22, 1), 3u);
    EXPECT_EQ(number(frame, 23, 1), 2u);
    EXPECT_EQ(number(frame, 24, 8), 1000u);
    EXPECT_EQ(number(frame, 32, 3), 0u | 1u << 3 | 2u << 6 | 3u << 9 | 4u << 12 | 5u << 15 | 6u << 18 | 7u << 21);

    for (int64_t i = 0; i < 100; ++i) values[i] = 5 * i + (i % 3 == 1);
    const std::string delta = store(values, Mask::Delta);
    ASSERT_EQ(delta.size(), 32 + 4 * (2 + 32 * 2 / 8u));
    EXPECT_EQ(number(delta, 20, 2), 1u);
    EXPECT_EQ(number(delta, 22, 1), 2u);
    EXPECT_EQ(number(delta, 24, 2), 4u);
    EXPECT_EQ(number(delta, 32, 2), 0u);
    EXPECT_EQ(number(delta, 34, 1), 0u | 2u << 2 | 0u << 4 | 1u << 6);
    EXPECT_EQ(number(delta, 32 + 10, 2), static_cast<uint64_t>(5 * 32));

    for (int64_t i = 0; i < 100; ++i) values[i] = i % 2 ? 30000 : -30000;
    const std::string dictionary = store(values, Mask::Dictionary);
    ASSERT_EQ(dictionary.size(), 32 + 4 * 2 + 4 * 32 * 2 / 8u);
    EXPECT_EQ(number(dictionary, 8, 8), 32 + 4 * 2u);
    EXPECT_EQ(number(dictionary, 20, 2), 2u);
    EXPECT_EQ(static_cast<short>(number(dictionary, 32, 2)), -30000);
    EXPECT_EQ(static_cast<short>(number(dictionary, 34, 2)), 30000);

    for (int64_t i = 0; i < 100; ++i) values[i] = 10 - i;
    const std::string line = store(values, Mask::Affine);
    ASSERT_EQ(line.size(), 40u);
    EXPECT_EQ(number(line, 8, 8), 40u);
    EXPECT_EQ(number(line, 20, 2), 3u);
    EXPECT_EQ(number(line, 24, 8), 10u);
    EXPECT_EQ(number(line, 32, 8), 0xFFFFu);

    for (int64_t i = 0; i < 100; ++i) values[i] = i / 50 ? -1 : 77;
    const std::string runs = store(values, Mask::RunLength);
    ASSERT_EQ(runs.size(), 10 + 2 * 3u);
    EXPECT_EQ(number(runs, 0, 8), 200u);
    EXPECT_EQ(number(runs, 8, 1), 1u);
    EXPECT_EQ(number(runs, 9, 1), 2u);
    EXPECT_EQ(number(runs, 10, 1), 49u);
    EXPECT_EQ(number(runs, 11, 2), 77u);
    EXPECT_EQ(number(runs, 13, 1), 49u);
    EXPECT_EQ(number(runs, 14, 2), 0xFFFFu);
}

TEST_F(EncodingTest, SmallColumnsStayPlain) {
    std::mt19937_64 random(5);
    for (const uint64_t rows : {40u, 41u}) {
        std::vector<int64_t> values(rows);
        for (uint64_t row = 0; row < rows; ++row) values[row] = static_cast<int64_t>(row);
        const auto factory = EncodingFactory::CreateFactory(Mask::All, *NewColumn(1));
        const auto stream = Write(*factory, cells_of(values, 1), 1, random);
        EXPECT_EQ(EncodingFactory::GetEncodingType(stream.get()), rows == 40 ? L"none" : L"affine");
    }
}

TEST_F(EncodingTest, ColumnsThatAreNotPlainIntegersAreNeverEncoded) {
    std::mt19937_64 random(6);
    const std::string cells(80000 * 8, 0);
    for (const wchar_t* type : {L"double", L"bit", L"date", L"oid"}) {
        const auto column = MakeRef<Column>(builtin::primitive_props(type), MakeRef<TempFileDataStream>());
        const auto factory = EncodingFactory::CreateFactory(Mask::All, *column);
        const auto stream = Write(*factory, cells, 8, random);
        EXPECT_EQ(EncodingFactory::GetEncodingType(stream.get()), L"none");
        EXPECT_EQ(stream->GetSize(), cells.size());
        factory->ExtractMetadata(column);
        EXPECT_FALSE(column->HasProperty(usrpropkey::min_value));
        EXPECT_FALSE(factory->MinimiseIntegerType(column));
    }
    usrprops odd = builtin::primitive_props(L"long");
    odd.set(usrpropkey::size, L"3");
    const auto column = MakeRef<Column>(odd, MakeRef<TempFileDataStream>());
    EXPECT_EQ(EncodingFactory::CreateFactory(Mask::All, *column)->ChooseEncoding(), nullptr);
}

// What goes to a database: every kind of cell, with its own null.
TEST_F(EncodingTest, StoredColumnsOfAllKindsAreEncoded) {
    std::mt19937_64 random(16);
    struct Case {
        const wchar_t* type;
        const wchar_t* encoding;
        int64_t null;
        std::function<int64_t(int64_t row)> value;
        const wchar_t* least;
    };
    const auto bits = [](double value) { return std::bit_cast<int64_t>(value); };
    const std::vector<Case> cases = {
        {L"date", L"for", -1, [&](int64_t) { return 2458120 + static_cast<int64_t>(random() % 900); }, L"2018-01-02"},
        {L"date", L"rle", -1, [](int64_t row) { return 2458120 + row / 500; }, L"2018-01-02"},
        {L"datetime", L"affine", -1, [](int64_t row) { return row * 864000000; }, nullptr},
        {L"double", L"dict", static_cast<int64_t>(datatraits<double>::null_bits),
         [&](int64_t) { return bits(static_cast<double>(random() % 11) / 100); }, nullptr},
        {L"double", L"none", static_cast<int64_t>(datatraits<double>::null_bits),
         [&](int64_t) { return bits(static_cast<double>(random()) / 7); }, nullptr},
    };
    for (const Case& c : cases) {
        for (const bool withNulls : {false, true}) {
            const auto column = MakeRef<Column>(builtin::primitive_props(c.type), MakeRef<TempFileDataStream>());
            const unsigned width = column->GetTokenSize();
            std::vector<int64_t> values(100000);
            for (size_t row = 0; row < values.size(); ++row) values[row] = c.value(static_cast<int64_t>(row));
            if (withNulls) values[77777] = c.null;
            const auto factory = EncodingFactory::CreateStorageFactory(Mask::All, *column);
            const auto stream = Write(*factory, cells_of(values, width), width, random);
            if (!withNulls) {
                EXPECT_EQ(EncodingFactory::GetEncodingType(stream.get()), c.encoding) << c.type;
            }
            ASSERT_EQ(contents(*stream, width), cells_of(values, width));
            column->SetData(stream);
            factory->ExtractMetadata(column);
            EXPECT_EQ(column->HasProperty(usrpropkey::not_null), !withNulls);
            if (c.least) {
                EXPECT_EQ(column->GetProperties().text(usrpropkey::min_value), c.least);
            }
            EXPECT_FALSE(factory->MinimiseIntegerType(column));
        }
    }
}

TEST_F(EncodingTest, TokensOfAStoredColumnAreNarrowedAndEncoded) {
    std::mt19937_64 random(17);
    for (const size_t distinct : {3u, 40u, 3000u}) {
        std::vector<std::string> texts;
        for (size_t i = 0; i < 70000; ++i) {
            const size_t n = random() % (distinct + 1);
            texts.push_back(n == distinct ? "" : "value " + std::to_string(n));
        }
        const auto column = MakeTexts(texts);
        for (size_t i = 0; i < texts.size(); i += 991) {
            column->Seek(i, 1);
            column->GetType()->put(column->GetOutput(), 0, column->GetType()->null());
        }
        const std::vector<std::string> rows = Rows(*column);
        const std::string cells = contents(*column->GetData(), 8);
        const auto factory = EncodingFactory::CreateStorageFactory(Mask::All, *column);
        column->SetData(Write(*factory, cells, 8, random));
        EXPECT_TRUE(factory->MinimiseTokenWidth(column));
        EXPECT_EQ(column->GetTokenSize(), distinct == 3 ? 1u : 2u);
        EXPECT_TRUE(column->HasProperty(usrpropkey::encoding));
        EXPECT_EQ(Rows(*column), rows);
    }
}

// A column changes its ways after the sample: each time all rows must survive the move.
TEST_F(EncodingTest, ValuesThatEscapeTheEncodingMoveTheColumn) {
    std::mt19937_64 random(7);
    const std::vector<Pattern> all = patterns();
    for (const Pattern& first : all) {
        for (const Pattern& second : all) {
            std::vector<int64_t> values(70000 + random() % 1000);
            for (uint64_t row = 0; row < values.size(); ++row) values[row] = first.value(row, random);
            const size_t before = values.size();
            for (uint64_t row = 0; row < 30000; ++row) values.push_back(second.value(row, random));
            const std::string cells = cells_of(values, 4);
            const auto factory = EncodingFactory::CreateFactory(Mask::All, *NewColumn(4), 1024);
            auto stream = Write(*factory, cells.substr(0, before * 4), 4, random, false);
            EXPECT_EQ(EncodingFactory::GetEncodingType(stream.get()) == L"none",
                      first.encoding == std::wstring(L"none"));
            for (size_t done = before * 4; done < cells.size();) {
                const size_t bytes = std::min<size_t>(4 * (1 + random() % 2000), cells.size() - done);
                stream = factory->AppendStream(stream, cells.data() + done, bytes);
                done += bytes;
                // Reading in between must not disturb the writer.
                if (random() % 4 == 0) {
                    const uint64_t position = random() % (done / 4) * 4;
                    const uint64_t limit = stream->Seek(position, 100);
                    ASSERT_EQ(std::memcmp(stream->GetInput(0), cells.data() + position, limit), 0);
                }
            }
            stream = factory->FinaliseStream(stream);
            ASSERT_EQ(contents(*stream, 4), cells) << first.name << " then " << second.name;
        }
    }
}

TEST_F(EncodingTest, ReopenedBlockStreamsGoOnWhereTheyEnded) {
    std::mt19937_64 random(8);
    for (const uint64_t rows : {1000u, 1024u, 1500u, 4096u}) {
        for (const uint64_t mask : {Mask::FrameOfReference, Mask::Delta, Mask::Dictionary}) {
            std::vector<int64_t> values(rows + 777);
            for (int64_t& value : values) value = static_cast<int64_t>(random() % 16) * 3;
            values[0] = 0, values[1] = 45;
            const std::string cells = cells_of(values, 4);
            const auto factory = EncodingFactory::CreateFactory(mask, *NewColumn(4));
            auto stream = Write(*factory, cells.substr(0, rows * 4), 4, random);
            const std::wstring encoding(EncodingFactory::GetEncodingType(stream.get()));
            ASSERT_NE(encoding, L"none");
            stream = Reopen(Stored(stream), encoding);
            if (encoding == L"delta") {
                // Only differences that occurred have a place.
                for (size_t i = rows; i < values.size(); ++i) values[i] = values[i - 1] == 45 ? 0 : 45;
            }
            const std::string more = cells_of(values, 4).substr(rows * 4);
            stream->Append(more.data(), more.size());
            EXPECT_EQ(contents(*stream, 4), cells_of(values, 4));
            const auto again = Reopen(Stored(stream), encoding);
            EXPECT_EQ(contents(*again, 4), cells_of(values, 4));
        }
    }
}

TEST_F(EncodingTest, AnAppendThatDoesNotFitLeavesTheStreamAsItWas) {
    const auto stream = MakeRef<FORDataStream>(MakeRef<TempFileDataStream>(), 4, 4, 32, 100);
    const std::string fits = cells_of({100, 115, 107}, 4);
    stream->Append(fits.data(), fits.size());
    const std::string escapes = cells_of({101, 116}, 4);
    EXPECT_EQ(StatusOf([&] { stream->Append(escapes.data(), escapes.size()); }), status::FORDataStream_FlushData);
    const std::string below = cells_of({99}, 4);
    EXPECT_EQ(StatusOf([&] { stream->Append(below.data(), below.size()); }), status::FORDataStream_FlushData);
    EXPECT_EQ(contents(*stream), fits);
    EXPECT_EQ(StatusOf([&] { stream->Append(fits.data(), 3); }), status::EncodedDataStream_Append);
}

TEST_F(EncodingTest, CellsAreNotWrittenInPlace) {
    std::mt19937_64 random(9);
    std::vector<int64_t> values(500);
    for (uint64_t row = 0; row < values.size(); ++row) values[row] = static_cast<int64_t>(row / 100);
    const auto factory = EncodingFactory::CreateFactory(Mask::RunLength, *NewColumn(4));
    const auto stream = Write(*factory, cells_of(values, 4), 4, random);
    ASSERT_EQ(EncodingFactory::GetEncodingType(stream.get()), L"rle");
    EXPECT_EQ(StatusOf([&] { stream->Resize(stream->GetSize()); }), status::RunLengthDataStream_Resize);
    EXPECT_EQ(StatusOf([&] { stream->GetOutput(0); }), status::EncodedDataStream_GetOutput);
    EXPECT_EQ(StatusOf([&] { stream->Extend(4); }), status::EncodedDataStream_Extend);
    EXPECT_EQ(StatusOf([&] { stream->Seek(stream->GetSize() + 1, 0); }), status::RunLengthDataStream_Seek);
    EXPECT_EQ(stream->Seek(stream->GetSize(), 4), 0u);
    EXPECT_NE(stream->GetInput(0), nullptr);
    EXPECT_EQ(StatusOf([&] { stream->GetInput(1); }), status::EncodedDataStream_GetInput);
    EXPECT_FALSE(stream->IsResident());
    stream->Purge();
    EXPECT_EQ(contents(*stream), cells_of(values, 4));
}

TEST_F(EncodingTest, RunsAreReadWithoutExpansion) {
    std::mt19937_64 random(10);
    std::vector<int64_t> values;
    std::vector<RunLengthDataStream::Run> expected;
    while (values.size() < 300000) {
        const uint64_t count = 1 + random() % (random() % 50 == 0 ? 40000 : 60);
        const int64_t value = static_cast<int64_t>(random() % 1000) - 500;
        if (!expected.empty() && expected.back().value == value) continue;
        expected.push_back({values.size(), count, value});
        values.insert(values.end(), count, value);
    }
    const std::string cells = cells_of(values, 2);
    for (const unsigned field : {1u, 2u, 4u, 8u}) {
        const auto stream = MakeRef<RunLengthDataStream>(MakeRef<TempFileDataStream>(), field, 2);
        for (size_t done = 0; done < cells.size();) {
            const size_t bytes = std::min<size_t>(2 * (1 + random() % 3000), cells.size() - done);
            stream->Append(cells.data() + done, bytes);
            done += bytes;
            if (random() % 16 == 0) stream->Flush();
        }
        stream->Flush();
        EXPECT_EQ(stream->GetEncodedSize(), stream->GetDelegate()->GetSize());
        // A run longer than its field holds comes in parts.
        std::vector<RunLengthDataStream::Run> runs;
        for (auto run = stream->ReadUntil(0); run.count != 0; run = stream->ReadNextRun()) {
            if (!runs.empty() && runs.back().value == run.value)
                runs.back().count += run.count;
            else
                runs.push_back(run);
        }
        ASSERT_EQ(runs.size(), expected.size());
        for (size_t i = 0; i < runs.size(); ++i) {
            ASSERT_EQ(runs[i].row, expected[i].row);
            ASSERT_EQ(runs[i].count, expected[i].count);
            ASSERT_EQ(runs[i].value, expected[i].value);
        }
        for (int i = 0; i < 500; ++i) {
            const uint64_t row = random() % values.size();
            const auto run = stream->ReadUntil(row);
            ASSERT_EQ(run.row, row);
            ASSERT_EQ(run.value, values[row]);
            ASSERT_GE(run.count, 1u);
            ASSERT_EQ(values[row + run.count - 1], run.value);
            if (i % 3 == 0) stream->Seek(row * 2, 2000);
        }
    }
}

TEST_F(EncodingTest, AConstantColumnIsOneRun) {
    const auto stream =
        RunLengthDataStream::CreateConstantStream(MakeRef<TempFileDataStream>(), usratom(short{-7}), 1000000);
    EXPECT_EQ(stream->GetSize(), 2000000u);
    EXPECT_EQ(stream->GetDelegate()->GetSize(), 10 + 10u);
    stream->Seek(1999998, 2);
    EXPECT_EQ(load_integer(stream->GetInput(0), 2), -7);
    EXPECT_EQ(stream->ReadUntil(5).count, 999995u);
}

TEST_F(EncodingTest, UnknownEncodingsAreRefused) {
    const auto plain = MakeRef<MemoryDataStream>();
    EXPECT_EQ(EncodingFactory::CreateEncodingStream(plain, L"none"), plain);
    EXPECT_EQ(StatusOf([&] { EncodingFactory::CreateEncodingStream(plain, L"frob"); }),
              status::EncodingFactory_CreateEncodingStream);
}

// A stored stream that was cut or has a bit turned over gives an error with a number, or some values; never more.
TEST_F(EncodingTest, DamagedStreamsGiveNumberedErrors) {
    std::mt19937_64 random(11);
    constexpr unsigned width = 4;
    for (const Pattern& pattern : patterns()) {
        if (pattern.encoding == std::wstring(L"none")) continue;
        std::vector<int64_t> values(2000);
        for (uint64_t row = 0; row < values.size(); ++row) values[row] = pattern.value(row, random);
        const auto factory = EncodingFactory::CreateFactory(Mask::All, *NewColumn(width), 64);
        const auto stream = Write(*factory, cells_of(values, width), width, random);
        const std::wstring encoding(EncodingFactory::GetEncodingType(stream.get()));
        ASSERT_NE(encoding, L"none") << pattern.name;
        const std::string stored = Stored(stream);
        const auto read = [&](const std::string& bytes) {
            return StatusOf([&] {
                const auto damaged = Reopen(bytes, encoding);
                // What a header claims of its length is bounded by nothing for lines and runs.
                const uint64_t end = std::min<uint64_t>(damaged->GetSize(), 100000);
                for (uint64_t position = 0; position < end;)
                    position += std::max<uint64_t>(damaged->Seek(position, 1), 1);
                if (damaged->GetSize() > 0) damaged->Seek(damaged->GetSize() - 1, 1);
            });
        };
        for (size_t size = 0; size < stored.size(); size += size < 64 ? 1 : 37) {
            const int fault = read(stored.substr(0, size));
            EXPECT_TRUE(fault == status::BlockDataStream_Header || fault == status::BlockDataStream_Truncated ||
                        fault == status::AffineDataStream_Header || fault == status::RunLengthDataStream_Header ||
                        fault == status::RunLengthDataStream_Truncated)
                << pattern.name << " cut to " << size << ": " << fault;
        }
        for (size_t bit = 0; bit < stored.size() * 8; bit += bit < 64 * 8 ? 1 : 101) {
            std::string damaged = stored;
            damaged[bit / 8] ^= static_cast<char>(1 << bit % 8);
            read(damaged);
        }
        for (int i = 0; i < 500; ++i) {
            std::string damaged = stored;
            for (int n = 0; n < 8; ++n) damaged[random() % 48 % damaged.size()] = static_cast<char>(random());
            read(damaged);
        }
    }
}

TEST_F(EncodingTest, StatisticsBecomeProperties) {
    std::mt19937_64 random(12);
    const auto extract = [&](const std::vector<int64_t>& values) {
        const auto column = NewColumn(2);
        const auto factory = EncodingFactory::CreateFactory(Mask::All, *column);
        column->SetData(Write(*factory, cells_of(values, 2), 2, random));
        factory->ExtractMetadata(column);
        return column;
    };
    const int64_t null = std::numeric_limits<short>::min();
    auto column = extract({3, 5, 9});
    EXPECT_EQ(column->GetProperty(usrpropkey::min_value), L"3");
    EXPECT_EQ(column->GetProperty(usrpropkey::max_value), L"9");
    EXPECT_EQ(column->GetProperty(usrpropkey::ordered), L"asc");
    EXPECT_EQ(column->GetProperty(usrpropkey::cardinality), L"3");
    EXPECT_TRUE(column->HasProperty(usrpropkey::unique));
    EXPECT_TRUE(column->HasProperty(usrpropkey::not_null));

    column = extract({9, 9, -5, null, null});
    EXPECT_EQ(column->GetProperty(usrpropkey::min_value), L"-5");
    EXPECT_EQ(column->GetProperty(usrpropkey::ordered), L"desc");
    EXPECT_EQ(column->GetProperty(usrpropkey::cardinality), L"2");
    EXPECT_FALSE(column->HasProperty(usrpropkey::unique));
    EXPECT_FALSE(column->HasProperty(usrpropkey::not_null));

    // The difference wraps to 1; the order does not.
    column = extract({32766, 32767, -32767});
    EXPECT_FALSE(column->HasProperty(usrpropkey::ordered));
    column = extract({null, null});
    EXPECT_FALSE(column->HasProperty(usrpropkey::max_value));
    column = extract({});
    EXPECT_FALSE(column->HasProperty(usrpropkey::ordered));
}

TEST_F(EncodingTest, StatisticsAgreeWithANaiveCount) {
    std::mt19937_64 random(13);
    for (int round = 0; round < 30; ++round) {
        std::vector<int64_t> values;
        const uint64_t rows = 1 + random() % 9000;
        while (values.size() < rows) {
            const int64_t value = static_cast<int64_t>(random() % 5) * 60 - 128;
            values.insert(values.end(), 1 + random() % (round % 3 == 0 ? 1000 : 3), value);
        }
        const std::string cells = cells_of(values, 1);
        IntegerStatistics<char> statistics(true);
        for (size_t done = 0; done < cells.size();) {
            const size_t n = std::min<size_t>(1 + random() % 3000, cells.size() - done);
            statistics.Update(cells.data() + done, n);
            done += n;
        }
        int least = 127, most = -128, leastStep = 127, mostStep = -128;
        uint64_t shortRuns = 0, length = 0;
        for (size_t i = 0; i < cells.size(); ++i) {
            least = std::min<int>(least, cells[i]);
            most = std::max<int>(most, cells[i]);
            if (i > 0) {
                const int step = static_cast<char>(cells[i] - cells[i - 1]);
                leastStep = std::min(leastStep, step);
                mostStep = std::max(mostStep, step);
            }
            if (i == 0 || cells[i] != cells[i - 1] || length == 256) {
                ++shortRuns;
                length = 0;
            }
            ++length;
        }
        EXPECT_EQ(statistics.GetCount(), cells.size());
        EXPECT_EQ(statistics.GetMinimum(), least);
        EXPECT_EQ(statistics.GetMaximum(), most);
        if (cells.size() > 1) {
            EXPECT_EQ(statistics.GetMinimumDifference(), leastStep);
            EXPECT_EQ(statistics.GetMaximumDifference(), mostStep);
        }
        EXPECT_EQ(statistics.GetRuns(0), shortRuns);
        EXPECT_EQ(statistics.GetDistinct(), std::set<char>(cells.begin(), cells.end()).size());
    }
}

TEST_F(EncodingTest, IntegersTakeTheNarrowestTypeThatHoldsThem) {
    std::mt19937_64 random(14);
    constexpr int64_t null = std::numeric_limits<int64_t>::min();
    struct Case {
        const wchar_t* type;
        std::function<int64_t(int64_t row)> value;
    };
    const std::vector<Case> cases = {
        {L"tiny", [](int64_t row) { return row % 127; }},
        {L"short", [](int64_t row) { return row % 2 ? -128 : 5; }},  // -128 is the null of a tiny
        {L"short", [](int64_t row) { return row % 3000; }},
        {L"long", [](int64_t row) { return 100000 + row; }},
        {L"long", [](int64_t row) { return row / 100 * 40000; }},
        {L"short", [&](int64_t row) { return row % 7 == 0 ? null : row % 1000; }},
        {L"long", [&](int64_t row) { return (row * row * 2654435761) % 2000000000; }},
        {L"bigint", [](int64_t row) { return int64_t{1} << (row % 40); }},
    };
    for (const Case& c : cases) {
        std::vector<int64_t> values(5000);
        for (size_t row = 0; row < values.size(); ++row) values[row] = c.value(static_cast<int64_t>(row));
        const auto column = NewColumn(8);
        const auto factory = EncodingFactory::CreateFactory(Mask::All, *column);
        column->SetData(Write(*factory, cells_of(values, 8), 8, random));
        EXPECT_EQ(factory->MinimiseIntegerType(column), c.type != std::wstring(L"bigint"));
        EXPECT_EQ(column->GetProperty(usrpropkey::type), c.type);
        const unsigned width = column->GetTokenSize();
        for (int64_t& value : values) {
            if (value == null) value = int64_t{1} << (8 * width - 1);
        }
        ASSERT_EQ(contents(*column->GetData(), width), cells_of(values, width)) << values[0] << ' ' << values[1];
        ASSERT_EQ(column->GetCount(), values.size());
    }
}

// As the catalog keeps it: the storage stream is moved to a file of its own and read by name.
TEST_F(EncodingTest, EncodedColumnsSurviveOnDisk) {
    std::mt19937_64 random(15);
    for (const Pattern& pattern : patterns()) {
        std::vector<int64_t> values(200000);
        for (uint64_t row = 0; row < values.size(); ++row) values[row] = pattern.value(row, random);
        const std::string cells = cells_of(values, 8);
        const std::wstring path = In(L"column.data");
        std::wstring encoding;
        {
            const auto factory = EncodingFactory::CreateFactory(Mask::All, *NewColumn(8));
            const auto stream = Write(*factory, cells, 8, random);
            encoding = EncodingFactory::GetEncodingType(stream.get());
            stream->Purge();
            const auto storage = EncodingFactory::GetStorageStream(stream);
            ASSERT_TRUE(storage->Rename(path));
        }
        const auto file = MakeRef<DataFile>(path, false);
        const auto stream =
            EncodingFactory::CreateEncodingStream(FileDataStream::OpenStream(file, 0, file->GetSize()), encoding);
        ASSERT_EQ(contents(*stream, 8), cells) << pattern.name;
        file->GetSize();
    }
}

}  // namespace
}  // namespace qve
