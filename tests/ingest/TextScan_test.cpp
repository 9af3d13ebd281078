#include "ingest/TextScan.h"

#include <fmt/format.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>

#include "ingest/RepeatingTextDataStream.h"
#include "storage/Column.h"
#include "storage/stream/DataStream.h"
#include "system/QuillonException.h"
#include "system/unicode.h"
#include "types/types_initialization.h"

namespace qve {
namespace {

class TextScanTest : public testing::Test {
protected:
    static void SetUpTestSuite() { types_initialization(); }
    void SetUp() override { m_path = std::filesystem::temp_directory_path() / fmt::format("qve_text_{}", ::getpid()); }
    void TearDown() override { std::filesystem::remove(m_path); }

    RefCntPtr<TextScan> Open(const std::string& text, std::vector<usrprops> columns = {}, usrprops properties = {}) {
        std::ofstream(m_path, std::ios::binary) << text;
        // Files of one test differ in length or time, but not always: each gets a name of its own.
        const auto path = m_path;
        m_path += "_";
        std::filesystem::rename(path, m_path);
        return MakeRef<TextScan>(TextScan::OpenFile(widen(m_path.string())), std::move(columns), std::move(properties));
    }

    // "name:type" of each column.
    static std::string Schema(const TextScan& scan) {
        std::string text;
        for (const usrprops& column : scan.GetSchema()) {
            const std::wstring_view type =
                column.text(usrpropkey::factory) == L"varchar" ? L"text" : column.text(usrpropkey::builtin);
            text += (text.empty() ? "" : " ") + narrow(column.text(usrpropkey::name)) + ":" + narrow(type);
        }
        return text;
    }

    // All rows, a line each, as the values print.
    static std::string Rows(TextScan& scan, unsigned pageSize = 7) {
        std::vector<RefCntPtr<Column>> columns;
        for (const usrprops& column : scan.GetSchema()) {
            columns.push_back(scan.GetColumn(std::wstring(column.text(usrpropkey::name))));
        }
        std::ostringstream text;
        while (const unsigned extent = scan.Next(pageSize)) {
            for (unsigned row = 0; row < extent; ++row) {
                for (const auto& column : columns) {
                    usratom value;
                    column->GetType()->get(column->GetInput(0), row, value);
                    column->GetType()->tostream(text, value) << (column == columns.back() ? "\n" : " ");
                }
            }
        }
        return text.str();
    }

    void Truncate(uintmax_t size) { std::filesystem::resize_file(m_path, size); }

private:
    std::filesystem::path m_path;
};

TEST_F(TextScanTest, FindsSeparatorHeaderAndTypes) {
    const auto scan = Open("id;name;price;day;ok\n1;Ann;2,5;2024-02-29;true\n2;Bob, jr;3;;false\n");
    EXPECT_EQ(Schema(*scan), "id:bigint name:text price:text day:date ok:bit");
    EXPECT_EQ(Rows(*scan), "1 'Ann' '2,5' 2024-02-29 t\n2 'Bob, jr' '3' NULL f\n");
    EXPECT_EQ(scan->GetTextProperties().text(usrpropkey::field_delimiter), L";");
    EXPECT_EQ(scan->GetTextProperties().text(usrpropkey::header_row), L"true");
}

TEST_F(TextScanTest, FindsOnlyDelimitersThatItsPropertiesCanSay) {
    const std::string text = "a\177b\177c\n";
    const auto scan = Open(text);
    EXPECT_EQ(Schema(*scan), Schema(*Open(text, scan->GetSchema(), scan->GetTextProperties())));
}

TEST_F(TextScanTest, NamesColumnsThatHaveNone) {
    EXPECT_EQ(Schema(*Open("1,2\n3,4\n")), "F1:bigint F2:bigint");
    EXPECT_EQ(Schema(*Open("sales,sales,,[x]\n1,2,3,4\n")), "sales:bigint sales 1:bigint F3:bigint (x):bigint");
}

TEST_F(TextScanTest, FindsTheHeaderOfATextOfTexts) {
    EXPECT_EQ(Schema(*Open("code,kind\nAA1,x\nBB2,x\nCC3,y\nDD4,y\nEE5,x\n")), "code:text kind:text");
    // The first record is like the others.
    EXPECT_EQ(Schema(*Open("AA1,x\nBB2,x\nCC3,y\n")), "F1:text F2:text");
}

TEST_F(TextScanTest, CountsFieldsThatAreNoValues) {
    std::string text = "n\n";
    for (int i = 0; i < 70000; ++i) text += std::to_string(i) + "\n";  // more than the sample
    text += "oops\n7\nworse\n";
    usrprops column;
    column.set(usrpropkey::type, L"bigint");
    const auto scan = Open(text, {column});
    while (scan->Next(1000)) {
    }
    const usrprops& properties = scan->GetColumn(L"n")->GetProperties();
    EXPECT_EQ(properties.text(usrpropkey::count_errors), L"2");
    EXPECT_EQ(properties.text(usrpropkey::first_error), L"70000");
    EXPECT_EQ(properties.text(usrpropkey::last_error), L"70002");
}

TEST_F(TextScanTest, ReadsDatesAsPeopleOfALocaleWriteThem) {
    const std::string american =
        "a;b;c\n\"Jan 5, 2020\";Saturday, May 2, 2020;March 1, 2020 23:59:01\nFeb 29, 2020;Sunday, May 3, 2020;"
        "December 31, 1999 00:00:00\n";
    const auto scan = Open(american);
    EXPECT_EQ(Schema(*scan), "a:date b:date c:datetime");
    EXPECT_EQ(Rows(*scan), "2020-01-05 2020-05-02 2020-03-01 23:59:01\n2020-02-29 2020-05-03 1999-12-31 00:00:00\n");

    usrprops properties;
    properties.set(usrpropkey::field_delimiter, L";");
    const auto rows = [&](const wchar_t* locale, const std::string& text) {
        properties.set(usrpropkey::locale, locale);
        return Rows(*Open(text, {}, properties));
    };
    const std::string german = "wann;kurz\n5. Januar 2020;05.01.20\n31. M\xC3\xA4rz 1999;11.12.99\n";
    EXPECT_EQ(rows(L"de_DE", german), "2020-01-05 2020-01-05\n1999-03-31 1999-12-11\n");
    EXPECT_EQ(rows(L"en_US", german), "'5. Januar 2020' 2020-05-01\n'31. M\xC3\xA4rz 1999' 1999-11-12\n");
    EXPECT_EQ(rows(L"fr_FR", "x\n1 ao\xC3\xBBt 1582\n15 octobre 1582\n"), "1582-08-01\n1582-10-15\n");
    EXPECT_EQ(rows(L"ja_JP",
                   "x\n2020\xE5\xB9\xB4"
                   "1\xE6\x9C\x88"
                   "5\xE6\x97\xA5\n"),
              "2020-01-05\n");
    EXPECT_EQ(rows(L"no such place", "x\n2020-01-05\n"), "2020-01-05\n");
    EXPECT_EQ(rows(L"en_US", "x\nFeb 30, 2020\nFeb 28, 2020\n"), "'Feb 30, 2020'\n'Feb 28, 2020'\n") << "no such day";

    properties.set(usrpropkey::datetime_format, L"yyyy|dd|MM HH'h'mm");
    EXPECT_EQ(rows(L"en_US", "x\n2020|31|12 07h05\n"), "2020-12-31 07:05:00\n");
    properties.set(usrpropkey::datetime_format, L"dd/MMM/yy");
    properties.set(usrpropkey::yy, L"50");
    EXPECT_EQ(rows(L"en_US", "x\n01/Feb/50\n01/Feb/51\n"), "2050-02-01\n1951-02-01\n");
    properties.set(usrpropkey::datetime_format, L"'");
    EXPECT_EQ(rows(L"en_US", "x\n01/Feb/50\n"), "2050-02-01\n") << "a pattern that fits nothing";

    // A column that is a date but for some of its fields.
    std::vector<usrprops> columns(1);
    columns[0].set(usrpropkey::type, L"date");
    properties.erase(usrpropkey::datetime_format);
    const auto mixed = Open("x\nJan 5, 2020\nsoon\n5 apples\nJan 6, 2020\n", columns, properties);
    EXPECT_EQ(Rows(*mixed), "2020-01-05\nNULL\nNULL\n2020-01-06\n");
    EXPECT_EQ(mixed->GetColumn(L"x")->GetProperties().text(usrpropkey::count_errors), L"2");
}

TEST_F(TextScanTest, ReadsTextOfAnyLength) {
    const std::string body = "1,one\n2,\"t,wo\"\n3,\n";
    constexpr uint64_t repetitions = 300'000;
    const auto stream = MakeRef<RepeatingTextDataStream>("id,name\n", body, repetitions);
    TextScan scan(stream, {}, {});
    EXPECT_EQ(Schema(scan), "id:bigint name:text");
    uint64_t rows = 0;
    uint64_t ids = 0;
    const auto column = scan.GetColumn(L"id");
    while (const unsigned extent = scan.Next(4096)) {
        const auto* values = column->GetInput(0).values<long long>();
        for (unsigned row = 0; row < extent; ++row) ids += static_cast<uint64_t>(values[row]);
        rows += extent;
    }
    EXPECT_EQ(rows, 3 * repetitions);
    EXPECT_EQ(ids, 6 * repetitions);
    EXPECT_EQ(scan.GetTextCursor(), stream->GetSize());
    EXPECT_THROW(RepeatingTextDataStream(std::string(1 << 19, 'x'), body, 1), QVE_InvalidArgument);
    EXPECT_THROW(RepeatingTextDataStream("id\n", "", 1), QVE_InvalidArgument);
}

TEST_F(TextScanTest, TellsEmptyTextFromNull) {
    usrprops header;
    header.set(usrpropkey::header_row, L"true");
    EXPECT_EQ(Rows(*Open("a,b\nx,\"\"\ny,\n\"q \"\"r\"\"\",z\n", {}, header)), "'x' ''\n'y' NULL\n'q \"r\"' 'z'\n");
}

TEST_F(TextScanTest, ReadsOtherCharacterSetsAndLineEnds) {
    const std::string windows =
        "name,n\r\nM\xFCller,1\r\nStra\xDF"
        "e,2\r\nGr\xF6\xDF"
        "e,3\r\n";
    EXPECT_EQ(Rows(*Open(windows)), "'Müller' 1\n'Straße' 2\n'Größe' 3\n");
    std::string utf16 = "\xFF\xFE";
    for (const char16_t unit : std::u16string(u"name,n\nŁódź,1\n日本,2\n")) {
        utf16 += static_cast<char>(unit & 0xFF);
        utf16 += static_cast<char>(unit >> 8);
    }
    EXPECT_EQ(Rows(*Open(utf16)), "'Łódź' 1\n'日本' 2\n");
    EXPECT_EQ(Rows(*Open("\xEF\xBB\xBFname,n\rx,1\ry,2\r")), "'x' 1\n'y' 2\n");
}

TEST_F(TextScanTest, LeavesApostrophesAndInchMarksAlone) {
    EXPECT_EQ(Rows(*Open("size,what\n5\",disk\n3\",'tis\n8\",don't\n")),
              "'5\"' 'disk'\n'3\"' '\\'tis'\n'8\"' 'don\\'t'\n");
    EXPECT_EQ(Rows(*Open("p,n\n\"C:\\dir\\\",1\n\"D:\\\",2\n")), "'C:\\\\dir\\\\' 1\n'D:\\\\' 2\n");
}

TEST_F(TextScanTest, ReadsAgainFromTheStart) {
    const auto scan = Open("a\n1\n2\n3\n");
    EXPECT_EQ(Rows(*scan), "1\n2\n3\n");
    scan->ResetCursor();
    EXPECT_EQ(Rows(*scan, 1), "1\n2\n3\n");
}

// Chunks end anywhere: within quotes, between the two characters of a line end, in empty and in short records.
TEST_F(TextScanTest, ReadsOnAcrossTheBordersOfChunks) {
    std::mt19937_64 random(3);
    std::string text = "id,note,x\r\n";
    std::string expected;
    for (unsigned i = 0; text.size() < 5'000'000; ++i) {
        const std::string note(random() % 60, static_cast<char>('a' + i % 26));
        const std::string x = std::to_string(random() % 1000);
        switch (random() % 6) {
            case 0:
                text += fmt::format("{},\"{}, \"\"\r\n{}\",{}\r\n", i, note, note, x);
                expected += fmt::format("{} '{}, \"\\r\\n{}' {}\n", i, note, note, x);
                break;
            case 1:
                text += fmt::format("{}\r\n\r\n", i);
                expected += fmt::format("{} NULL NULL\n", i);
                break;
            default:
                text += fmt::format("{},n{},{}\r\n", i, note, x);
                expected += fmt::format("{} 'n{}' {}\n", i, note, x);
        }
    }
    text.resize(text.size() - 2);  // the last record ends with the text
    const auto scan = Open(text);
    for (const unsigned pageSize : {1000u, 100'000u, 1u}) {
        const std::string rows = Rows(*scan, pageSize);
        ASSERT_EQ(rows.size(), expected.size());
        ASSERT_TRUE(rows == expected) << pageSize;
        EXPECT_EQ(scan->Next(1), 0u) << "the end is the end ever after";
        EXPECT_EQ(scan->GetTextCursor(), text.size());
        scan->ResetCursor();
    }
    // Back to the start with a chunk on its way.
    EXPECT_EQ(scan->Next(10), 10u);
    scan->ResetCursor();
    EXPECT_TRUE(Rows(*scan, 5000) == expected);
}

TEST_F(TextScanTest, ReadsRecordsThatAreLongerThanAChunk) {
    std::string text = "n,long\n";
    std::string expected;
    for (unsigned i = 0; i < 6; ++i) {
        const std::string line(i % 2 ? 1'300'000 : 10, static_cast<char>('a' + i));
        text += fmt::format("{},\"{}\n{}\"\n", i, line, line);
        expected += fmt::format("{} '{}\\n{}'\n", i, line, line);
    }
    EXPECT_TRUE(Rows(*Open(text)) == expected);
}

TEST_F(TextScanTest, ATextThatShrinksWhileItIsReadIsAnError) {
    std::string text = "n\n";
    for (unsigned i = 0; text.size() < 12'000'000; ++i) text += std::to_string(i) + "\n";
    const auto scan = Open(text);
    Truncate(6'000'000);
    EXPECT_THROW(while (scan->Next(10'000)){}, QVE_RuntimeError);
}

TEST_F(TextScanTest, RefusesWhatIsNoTable) {
    EXPECT_THROW(Open(""), QVE_LogicError);
    EXPECT_THROW(Open("no line end at all"), QVE_LogicError);
    EXPECT_THROW(Open(std::string(40000, ',') + "\n1\n"), QVE_RuntimeError);
    usrprops headerOnly;
    headerOnly.set(usrpropkey::header_row, L"true");
    EXPECT_THROW(Open("a,b\n", {}, headerOnly), QVE_LogicError);
    EXPECT_THROW(TextScan::OpenFile(L"/nowhere/at/all.csv"), QVE_RuntimeError);
    // Bytes of any kind are read as something, or refused with an error.
    std::string binary;
    for (int i = 0; i < 5000; ++i) binary += static_cast<char>((i * 7919) >> 3);
    try {
        Rows(*Open(binary));
    } catch (const QuillonException&) {
    }
}

TEST_F(TextScanTest, EndsWhenItIsCancelled) {
    const auto scan = Open("a\n1\n2\n");
    scan->SetCancelled();
    EXPECT_THROW(scan->Next(1), Operator::CancelledException);
}

}  // namespace
}  // namespace qve
