#include "storage/Column.h"

#include "storage/status.h"
#include "storage/stream/ReadOnlyDataStream.h"
#include "tests/storage/storage_fixture.h"

namespace qve {
namespace {

using ColumnTest = StorageTest;
using Texts = std::vector<std::string>;

usrprops ArrayProperties() {
    usrprops properties = LongProperties();
    properties.set(usrpropkey::compression, L"array");
    properties.set(usrpropkey::storagewidth, 1);
    return properties;
}

RefCntPtr<Column> MakeArray(const std::vector<int>& values) {
    auto column = MakeRef<Column>(ArrayProperties(), MakeRef<TempFileDataStream>(), MakeRef<TempFileDataStream>());
    for (const int value : values) column->Append(1, usratom(value), false);
    return column;
}

usrprops IndexProperties(const wchar_t* type) {
    return builtin::primitive_props(type);
}

TEST_F(ColumnTest, WidthsAndKernelTypesFollowTheProperties) {
    Column plain(LongProperties());
    EXPECT_EQ(plain.GetTokenSize(), 4u);
    EXPECT_EQ(plain.GetPrimitiveType(usrpropkey::empty), L"long");
    EXPECT_EQ(plain.GetPrimitiveType(usrpropkey::distinct), L"long");

    Column text(TextProperties());
    EXPECT_EQ(text.GetTokenSize(), 8u);
    EXPECT_EQ(text.GetDataType(), DataType::usr);
    EXPECT_EQ(text.GetPrimitiveType(usrpropkey::empty), L"usr8");
    EXPECT_EQ(text.GetPrimitiveType(usrpropkey::distinct), L"usr8");
    EXPECT_EQ(text.GetPrimitiveType(usrpropkey::compression), L"oid");
    text.SetProperty(usrpropkey::storagewidth, L"2");
    text.SetProperty(usrpropkey::distinct, L"");
    EXPECT_EQ(text.GetPrimitiveType(usrpropkey::distinct), L"usht");

    EXPECT_EQ(plain.GetFlags(), 0);
    plain.SetProperty(usrpropkey::not_null, L"");
    plain.SetProperty(usrpropkey::storagetype, Column::storageVal);
    EXPECT_EQ(plain.GetFlags(), column_flags::not_null | column_flags::constant);
    plain.ClearProperty(usrpropkey::not_null);
    EXPECT_EQ(plain.GetFlags(), column_flags::constant);
}

TEST_F(ColumnTest, NonsenseInPropertiesIsNeverADivisionByZero) {
    for (const wchar_t* width : {L"0", L"", L"junk", L"99999999999999999999"}) {
        usrprops properties = TextProperties();
        properties.set(usrpropkey::storagewidth, width);
        Column column(properties, MakeRef<TempFileDataStream>(), MakeRef<TempFileDataStream>());
        EXPECT_EQ(column.GetCount(), 0u);
        EXPECT_EQ(column.GetTokenSize(), 8u);
    }
    Column untyped{usrprops()};
    EXPECT_NE(StatusOf([&] { untyped.GetType(); }), 0);
}

TEST_F(ColumnTest, CompressedDataNeedsADictionary) {
    EXPECT_EQ(StatusOf([] { Column(TextProperties(), MakeRef<TempFileDataStream>()); }), status::Column_SetData);
    const Column bare(TextProperties());
    EXPECT_EQ(StatusOf([&] { Column(bare, MakeRef<TempFileDataStream>()); }), status::Column_SetData_copy);
    EXPECT_EQ(StatusOf([&] { bare.GetProperty(usrpropkey::unique); }), status::Column_GetProperty);
}

TEST_F(ColumnTest, ValuesComeBackAsTheyWereAppended) {
    const auto longs = MakeLongs({3, -1, 2147483647});
    longs->Append(2, usratom(builtin::usrtypeof<int>()), false);
    EXPECT_EQ(Rows(*longs), (Texts{"3", "-1", "2147483647", "NULL", "NULL"}));
    const auto texts = MakeTexts({"b", "", "a", "b"});
    texts->Append(1, usratom(texts->GetType()), false);
    EXPECT_EQ(Rows(*texts), (Texts{"'b'", "''", "'a'", "'b'", "NULL"}));
    const auto array = MakeArray({70000, 5, 70000});
    EXPECT_EQ(Rows(*array), (Texts{"70000", "5", "70000"}));
    EXPECT_EQ(array->GetData()->GetSize(), 3u);
}

TEST_F(ColumnTest, FillingGivesTheSameBytesForFewRowsAndMany) {
    for (const unsigned count : {1u, 4u, 5u, 1000u}) {
        const auto column = MakeLongs({});
        column->Append(count, usratom(123456789), false);
        ASSERT_EQ(column->GetCount(), count);
        column->Seek(0, count);
        for (unsigned row = 0; row < count; ++row) ASSERT_EQ(column->GetInput().values<int>()[row], 123456789);
    }
    const auto texts = MakeTexts({});
    texts->Append(1000, TextAtom("x"), false);
    EXPECT_EQ(texts->GetHeap()->after(texts->GetHeap()->first()), texts->GetHeap()->next());
    EXPECT_EQ(Rows(*texts).back(), "'x'");
}

TEST_F(ColumnTest, AppendKeepsTheCursorWhenAsked) {
    const auto column = MakeLongs({1, 2, 3, 4});
    column->Seek(1, 2);
    column->Append(5, usratom(9), true);
    EXPECT_EQ(column->GetCursor(), 1u);
    EXPECT_EQ(column->GetInput().values<int>()[0], 2);
    column->Append(1, usratom(8), false);
    EXPECT_EQ(column->GetCursor(), 9u);
    EXPECT_EQ(column->GetLimit(), 1u);
}

TEST_F(ColumnTest, OverlayTakesSelectedRowsAcrossHeaps) {
    const unsigned selection[] = {0, 2, 3};
    const auto longs = MakeLongs({10, 20, 30, 40});
    longs->Seek(0, 4);
    const auto target = MakeLongs({});
    target->Append(3, longs->GetInput(), selection, false);
    target->Append(2, longs->GetInput(1), nullptr, false);
    EXPECT_EQ(Rows(*target), (Texts{"10", "30", "40", "20", "30"}));

    const auto texts = MakeTexts({"a", "b", "c", "a"});
    texts->Append(1, usratom(texts->GetType()), false);
    texts->Seek(0, 5);
    const auto other = MakeTexts({"c"});
    other->Append(3, texts->GetInput(), selection, false);
    other->Append(5, texts->GetInput(), nullptr, false);
    EXPECT_EQ(Rows(*other), (Texts{"'c'", "'a'", "'c'", "'a'", "'a'", "'b'", "'c'", "'a'", "NULL"}));

    const auto shared = MakeRef<Column>(*texts, MakeRef<TempFileDataStream>());
    shared->Append(3, texts->GetInput(), selection, false);
    EXPECT_EQ(Rows(*shared), (Texts{"'a'", "'c'", "'a'"}));
    EXPECT_EQ(StatusOf([&] { target->Overlay(1, texts->GetInput(), nullptr); }), status::Column_Overlay);
}

TEST_F(ColumnTest, OverlayDoesNotMistakeAPageWithoutNullsForAColumnWithout) {
    const auto source = MakeLongs({1});
    source->SetProperty(usrpropkey::not_null, L"");
    source->Seek(0, 1);
    const auto target = MakeLongs({});
    target->Append(1, usratom(builtin::usrtypeof<int>()), false);
    target->Append(1, source->GetInput(), nullptr, false);
    EXPECT_EQ(target->GetFlags() & column_flags::not_null, 0);
}

TEST_F(ColumnTest, ResizeWritesTheDefault) {
    const auto column = MakeLongs({7});
    column->SetProperty(usrpropkey::default_value, L"42");
    column->Resize(3);
    EXPECT_EQ(Rows(*column), (Texts{"7", "42", "42"}));
    column->Resize(3);
    column->Resize(1);
    EXPECT_EQ(Rows(*column), Texts{"7"});
    column->SetProperty(usrpropkey::default_value, L"nothing of the kind");
    column->Resize(2);
    EXPECT_EQ(Rows(*column), (Texts{"7", "NULL"}));

    const auto texts = MakeTexts({"a", "b"});
    const uint64_t dictionary = texts->GetDict()->GetSize();
    texts->Resize(1);
    EXPECT_EQ(texts->GetDict()->GetSize(), dictionary);
}

TEST_F(ColumnTest, AFrozenDictionaryTakesItsOwnValuesAndNull) {
    const auto texts = MakeTexts({"a", "b"});
    Column frozen(texts->GetProperties(), texts->GetData(), MakeRef<ReadOnlyDataStream>(texts->GetDict()));
    EXPECT_FALSE(frozen.CanAppend());
    EXPECT_TRUE(frozen.CanWriteAtom(TextAtom("b")));
    EXPECT_FALSE(frozen.CanWriteAtom(TextAtom("c")));
    EXPECT_TRUE(frozen.CanWriteAtom(usratom(frozen.GetType())));
    frozen.SetProperty(usrpropkey::default_value, L"'c'");
    frozen.Append(1, false);
    EXPECT_EQ(Rows(frozen).back(), "NULL");
}

TEST_F(ColumnTest, MarkNumbersTheRows) {
    Column empty(IndexProperties(L"oid"), MakeRef<TempFileDataStream>());
    empty.Mark(0, 7);
    EXPECT_EQ(empty.GetCount(), 0u);
    EXPECT_EQ(empty.GetProperty(usrpropkey::dense), L"7");
    EXPECT_EQ(empty.GetProperty(usrpropkey::ordered), L"asc");
    EXPECT_TRUE(empty.HasProperty(usrpropkey::unique));

    for (const wchar_t* type : {L"uchr", L"usht", L"ulng", L"oid"}) {
        Column column(IndexProperties(type), MakeRef<TempFileDataStream>());
        column.Mark(100, 5);
        const Texts rows = Rows(column);
        ASSERT_EQ(rows.size(), 100u);
        EXPECT_EQ(rows.front(), "5");
        EXPECT_EQ(rows.back(), "104");
    }
    Column longer(IndexProperties(L"ulng"), MakeRef<TempFileDataStream>());
    longer.Mark(100000, 1);
    longer.Seek(99999, 1);
    EXPECT_EQ(longer.GetInput().values<unsigned>()[0], 100000u);
    longer.MarkRange(10, 12, 500);
    longer.Seek(9, 4);
    EXPECT_EQ(longer.GetInput().values<unsigned>()[1], 500u);
    EXPECT_EQ(longer.GetInput().values<unsigned>()[3], 13u);
    EXPECT_EQ(StatusOf([&] { longer.MarkRange(2, 1, 0); }), status::Column_MarkRange_order);
    EXPECT_EQ(StatusOf([&] { longer.MarkRange(0, 100001, 0); }), status::Column_MarkRange_rows);
}

TEST_F(ColumnTest, TokensShrinkToWhatTheDictionaryNeeds) {
    const auto texts = MakeTexts({"a", "b", "a"});
    texts->Append(1, usratom(texts->GetType()), false);
    const Texts before = Rows(*texts);
    EXPECT_EQ(texts->GetMinimalTokenSize(), 1u);
    EXPECT_TRUE(texts->MinimiseTokens(MakeRef<TempFileDataStream>()));
    EXPECT_EQ(texts->GetData()->GetSize(), 4u);
    EXPECT_EQ(texts->GetProperty(usrpropkey::storagewidth), L"1");
    EXPECT_EQ(Rows(*texts), before);
    EXPECT_FALSE(texts->MinimiseTokens(MakeRef<TempFileDataStream>()));

    EXPECT_TRUE(texts->SetTokenSize(MakeRef<TempFileDataStream>(), 4));
    EXPECT_EQ(Rows(*texts), before);
    for (int i = 0; i < 100; ++i) texts->Append(1, TextAtom("word" + std::to_string(i)), false);
    EXPECT_EQ(texts->GetMinimalTokenSize(), 2u);
    EXPECT_FALSE(texts->SetTokenSize(MakeRef<TempFileDataStream>(), 1));
    EXPECT_FALSE(texts->SetTokenSize(MakeRef<TempFileDataStream>(), 3));
    EXPECT_FALSE(MakeLongs({1})->SetTokenSize(MakeRef<TempFileDataStream>(), 2));
}

TEST_F(ColumnTest, PartsOfACompressedColumn) {
    const auto array = MakeArray({30, 10, 30, 20, 30});
    array->Append(1, usratom(array->GetType()), false);
    const auto tokens = array->GetDataColumn();
    EXPECT_EQ(tokens->GetPrimitiveType(usrpropkey::empty), L"uchr");
    EXPECT_EQ(Rows(*tokens), (Texts{"0", "1", "0", "2", "0", "NULL"}));
    const auto dictionary = array->GetDictionaryColumn();
    EXPECT_EQ(Rows(*dictionary), (Texts{"30", "10", "20"}));
    EXPECT_FALSE(dictionary->CanAppend());
    array->Seek(2, 1);
    EXPECT_EQ(Rows(*array->GetFrequencyColumn()), (Texts{"3", "1", "1"}));
    EXPECT_EQ(array->GetInput().values<unsigned char>()[0], 0);  // the reader's window is untouched
    EXPECT_EQ(Rows(*MakeTexts({"x", "y", "x"})->GetFrequencyColumn()), (Texts{"2", "1"}));

    const auto plain = MakeLongs({1});
    EXPECT_EQ(StatusOf([&] { plain->GetDataColumn(); }), status::Column_GetDataColumn);
    EXPECT_EQ(StatusOf([&] { plain->GetDictionaryColumn(); }), status::Column_GetDictionaryColumn_plain);
    EXPECT_EQ(StatusOf([&] { plain->GetFrequencyColumn(); }), status::Column_GetFrequencyColumn);
    EXPECT_EQ(StatusOf([&] { MakeTexts({})->GetDictionaryColumn(); }), status::Column_GetDictionaryColumn_heap);
}

TEST_F(ColumnTest, ASortedDictionaryIsSearchedByComparison) {
    const auto texts = MakeTexts({"ant", "bee", "cow"});
    const uint64_t bee = texts->GetHeap()->find(TextAtom("bee"));
    EXPECT_EQ(texts->GetDictionaryToken(TextAtom("bee")), bee);
    texts->GetDict()->SetAccelerator(nullptr);
    Column sorted(texts->GetProperties(), texts->GetData(), MakeRef<ReadOnlyDataStream>(texts->GetDict()));
    sorted.SetProperty(usrpropkey::comparable, L"");
    sorted.SetProperty(usrpropkey::distinct, L"");
    EXPECT_FALSE(sorted.IsAcceleratorComplete());
    const uint64_t threshold = Column::s_usrAcceleratorThreshold;
    Column::setAcceleratorThreshold(0);
    EXPECT_EQ(sorted.GetDictionaryToken(TextAtom("bee")), bee);
    Column::setAcceleratorThreshold(threshold);
    EXPECT_EQ(sorted.GetDictionaryToken(TextAtom("bat")), usrheap::null_token);
    EXPECT_EQ(sorted.GetDictionaryToken(usratom(sorted.GetType())), usrheap::null_token);
    ASSERT_TRUE(sorted.IsAcceleratorComplete());
    sorted.UpdateAcceleratorProperties();
    EXPECT_EQ(sorted.GetProperty(usrpropkey::cardinality), L"3");
    EXPECT_EQ(sorted.GetProperty(usrpropkey::min_value), L"'ant'");
    EXPECT_EQ(sorted.GetProperty(usrpropkey::max_value), L"'cow'");
}

TEST_F(ColumnTest, TypesChangeWithTheirProperties) {
    Column column(LongProperties());
    column.SetName(L"c");
    column.SetProperty(usrpropkey::storagewidth, L"2");
    column.SetType(builtin::primitive_type(L"double"));
    EXPECT_EQ(column.GetTokenSize(), 8u);
    EXPECT_EQ(column.GetName(), L"c");
    EXPECT_EQ(column.GetDataType(), DataType::real);
    EXPECT_EQ(column.GetPrimitiveType(usrpropkey::empty), L"double");
}

TEST_F(ColumnTest, ForksReadTheSameRowsAtTheirOwnPlace) {
    const auto texts = MakeTexts({"a", "b", "c"});
    const auto fork = texts->Fork(true);
    texts->Seek(0, 1);
    fork->Seek(2, 1);
    usratom atom(fork->GetType());
    fork->GetType()->get(fork->GetInput(), 0, atom);
    EXPECT_EQ(atom.bytes(), "c");
    texts->GetType()->get(texts->GetInput(), 0, atom);
    EXPECT_EQ(atom.bytes(), "a");

    Column page(texts->GetProperties());
    page.ShareStreams(*texts);
    EXPECT_EQ(page.GetInput().data, texts->GetInput().data);
    EXPECT_EQ(page.GetHeap()->stream(), texts->GetHeap()->stream());
}

}  // namespace
}  // namespace qve
