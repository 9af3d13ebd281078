#include <algorithm>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>

#include "storage/SimpleDatabase.h"
#include "storage/status.h"
#include "system/unicode.h"
#include "tests/storage/storage_fixture.h"

namespace qve {
namespace {

namespace fs = std::filesystem;

/// Databases whose files were cut, flipped or replaced: a number, never a crash.
class DamageTest : public StorageTest {
protected:
    DamageTest() {
        SimpleDatabase database(In(L"db"));
        database.CreateDatabase();
        database.CreateSchema(L"s");
        database.CreateTable(L"t", L"s");
        database.CreateColumn(L"long", L"t", L"s", LongProperties());
        database.CreateColumn(L"text", L"t", L"s", TextProperties());
        database.ReplaceColumn(L"long", L"t", L"s", *MakeLongs({1, 2, 3}));
        database.ReplaceColumn(L"text", L"t", L"s", *MakeTexts({"a", "b", "c"}));
    }
    fs::path Root() const { return Path::utf8path(In(L"db")); }
    static std::string Get(const fs::path& path) {
        std::ifstream file(path, std::ios::binary);
        std::ostringstream bytes;
        bytes << file.rdbuf();
        return bytes.str();
    }
    static void Put(const fs::path& path, const std::string& bytes) {
        std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
    }
    /// Reads all there is; true when it was refused with a number.
    bool ReadAll() {
        try {
            SimpleDatabase database(In(L"db"));
            for (const std::wstring& schema : database.GetSchemaNames()) {
                for (const std::wstring& table : database.GetTableNames(schema)) {
                    for (const std::wstring& column : database.GetColumnNames(table, schema)) {
                        Rows(*database.LoadColumn(column, table, schema));
                    }
                }
            }
        } catch (const QuillonException& fault) {
            EXPECT_NE(fault.GetStatus(), 0);
            EXPECT_NE(fault.GetText(), "");
            return true;
        }
        return false;
    }
};

TEST_F(DamageTest, EveryFileCutOrGoneIsRefusedOrRead) {
    ASSERT_FALSE(ReadAll());
    std::vector<fs::path> files;
    for (const auto& entry : fs::recursive_directory_iterator(Root())) {
        if (entry.is_regular_file()) files.push_back(entry.path());
    }
    for (const fs::path& path : files) {
        SCOPED_TRACE(path.string());
        const std::string whole = Get(path);
        for (const size_t length : {size_t{0}, size_t{1}, whole.size() / 2, whole.size() - (whole.empty() ? 0 : 1)}) {
            Put(path, whole.substr(0, length));
            ReadAll();
        }
        Put(path, whole + "tail of something else");
        ReadAll();
        fs::remove(path);
        ReadAll();
        Put(path, whole);
    }
    EXPECT_FALSE(ReadAll());
}

TEST_F(DamageTest, RandomBytesInTheCatalogAreRefusedOrRead) {
    std::mt19937 random(20240601);
    std::vector<fs::path> files;
    for (const auto& entry : fs::recursive_directory_iterator(Root())) {
        if (entry.is_regular_file() && entry.file_size() > 0) files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    for (int round = 0; round < 300; ++round) {
        const fs::path& path = files[random() % files.size()];
        const std::string whole = Get(path);
        std::string bytes = whole;
        for (int flips = 0; flips < 3; ++flips) bytes[random() % bytes.size()] = static_cast<char>(random());
        SCOPED_TRACE(path.string() + " round " + std::to_string(round));
        Put(path, bytes);
        ReadAll();
        Put(path, whole);
    }
    EXPECT_FALSE(ReadAll());
}

TEST_F(DamageTest, RowsOfTheCatalogThatAreNotWholeAreLeftOut) {
    const auto tables = [this] {
        SimpleDatabase database(In(L"db"));
        std::vector<std::wstring> names;
        for (const std::wstring& schema : database.GetSchemaNames()) {
            if (schema == Database::tempSchema) continue;
            for (const std::wstring& table : database.GetTableNames(schema)) names.push_back(table);
        }
        return names;
    };
    const auto before = tables();
    // Some columns have a row more, and a part of another.
    for (const char* file : {"SYS/TABLES_ID.data", "SYS/TABLES_PARENT.data", "SYS/COLUMNS_ID.data"}) {
        Put(Root() / file, Get(Root() / file) + std::string("\xFF\0\0\0\0\0\0\0\0\0\0", 11));
    }
    EXPECT_EQ(tables(), before);
    // The next change writes whole rows.
    {
        SimpleDatabase database(In(L"db"));
        database.CreateSchema(L"another");
        database.CreateTable(L"whole", L"another");
    }
    std::vector<std::wstring> after = before;
    after.push_back(L"whole");
    EXPECT_EQ(tables(), after);
}

TEST_F(DamageTest, FileNamesInTheCatalogDoNotLeadOutOfIt) {
    // The text "text.data", as the catalog holds it in UTF-16, becomes a path of the same length.
    const fs::path values = Root() / "SYS/COLUMNPROPS_VALUE.dict";
    const std::string whole = Get(values);
    const auto utf16 = [](const std::string& text) {
        std::string units;
        for (const char c : text) units += {c, '\0'};
        return units;
    };
    const std::string wanted = utf16("text.1.data");
    const size_t at = whole.find(wanted);
    ASSERT_NE(at, std::string::npos);
    std::string bytes = whole;
    bytes.replace(at, wanted.size(), utf16("../../etc/x"));
    Put(values, bytes);
    SimpleDatabase database(In(L"db"));
    EXPECT_EQ(StatusOf([&] { database.LoadColumn(L"text", L"t", L"s"); }), status::SimpleDatabase_LoadCatalog);
}

}  // namespace
}  // namespace qve
