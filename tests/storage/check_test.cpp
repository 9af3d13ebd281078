#include <chrono>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "os/WorkFolder.h"
#include "storage/DatabaseCheck.h"
#include "system/unicode.h"
#include "tests/storage/storage_fixture.h"

namespace qve {
namespace {

namespace fs = std::filesystem;
using Kind = DatabaseCheck::Kind;

class CheckTest : public StorageTest {
protected:
    // What other tests and servers leave behind is none of these databases'.
    CheckTest() : m_temporary(OS::gettempdir()) {
        OS::mkdir(In(L"own"), false);
        OS::tempdir(In(L"own"));
        SimpleDatabase database(In(L"db"));
        database.CreateDatabase();
        for (const std::wstring schema : {L"s", L"empty"}) database.CreateSchema(schema);
        for (const std::wstring table : {L"t", L"u", L"none"}) {
            database.CreateTable(table, L"s");
            if (table == L"none") continue;
            database.CreateColumn(L"n", table, L"s", LongProperties());
            database.CreateColumn(L"text", table, L"s", TextProperties());
            database.ReplaceColumn(L"n", table, L"s", *MakeLongs({1, 2, 3}));
            database.ReplaceColumn(L"text", table, L"s", *MakeTexts({"a", "b", "a"}));
        }
    }
    ~CheckTest() override { OS::tempdir(m_temporary); }

    fs::path File(const std::string& name) const { return fs::path(Path::utf8path(In(L"db"))) / name; }
    /// The only file of a table's column with this ending.
    fs::path ColumnFile(const std::string& table, const std::string& column, const std::string& extension) const {
        fs::path found;
        for (const auto& entry : fs::directory_iterator(File("s/" + table))) {
            const std::string name = entry.path().filename();
            if (name.starts_with(column) && name.ends_with(extension)) found = entry.path();
        }
        EXPECT_FALSE(found.empty()) << table << " " << column << extension;
        return found;
    }
    static std::string Get(const fs::path& path) {
        std::ifstream file(path, std::ios::binary);
        std::ostringstream bytes;
        bytes << file.rdbuf();
        return bytes.str();
    }
    static void Put(const fs::path& path, const std::string& bytes) {
        std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
    }
    /// The places of one kind, and what is said of them.
    static std::string Of(const DatabaseCheck& check, Kind kind) {
        std::string text;
        for (const DatabaseCheck::Finding& finding : check.GetFindings()) {
            if (finding.kind == kind) text += narrow(finding.place) + ": " + narrow(finding.text) + "\n";
        }
        return text;
    }
    std::string Verify(Kind kind, const std::wstring& name = L"db") const {
        DatabaseCheck check(In(name), nullptr);
        check.Verify();
        return Of(check, kind);
    }

private:
    const std::wstring m_temporary;
};

TEST_F(CheckTest, ASoundDatabaseHasNoFinding) {
    DatabaseCheck check(In(L"db"), nullptr);
    check.Verify();
    for (const auto& finding : check.GetFindings()) ADD_FAILURE() << narrow(finding.place) << narrow(finding.text);
    EXPECT_EQ(check.GetTables(), 3u + 7u);
    EXPECT_EQ(check.GetColumns(), 4u + 27u);
    SimpleDatabase(In(L"db")).PackageDatabase(In(L"pkg"));
    EXPECT_EQ(Verify(Kind::damage, L"pkg"), "");
    EXPECT_EQ(Verify(Kind::leftover, L"pkg"), "");
}

TEST_F(CheckTest, DamageIsFoundAndNamed) {
    const auto damaged = [this](const fs::path& path, const std::string& bytes, const std::string& expected) {
        const std::string whole = Get(path);
        Put(path, bytes);
        const std::string found = Verify(Kind::damage);
        EXPECT_NE(found.find(expected), std::string::npos) << path << "\n" << found;
        Put(path, whole);
    };
    const fs::path text = ColumnFile("t", "text", ".data");
    const std::string cells = Get(text);
    ASSERT_EQ(cells.size() % 3, 0u);
    const size_t width = cells.size() / 3;
    std::string wild = cells;
    wild[width] = 3;  // the middle of an entry
    damaged(text, wild, "[s].[t].[text]: a row from 0 on has no entry in its dictionary");
    damaged(text, cells.substr(0, width), "[s].[t].[text]: it has 1 rows, and [n] has 3");
    const fs::path dictionary = ColumnFile("t", "text", ".dict");
    damaged(dictionary, Get(dictionary).substr(0, Get(dictionary).size() - 1), "[s].[t].[text]: ");
    damaged(dictionary, "", "[s].[t].[text]: ");
    const fs::path type = ColumnFile("t", "text", ".type");
    damaged(type, Get(type) + "description:other\n", "[s].[t].[text]: its property file");
    damaged(File("SYS/TABLES_ACTIVE.data"), "", "[SYS].[TABLES].[ACTIVE]: it has 0 rows, and [ID] has ");
    damaged(File(".database.type"), "version-major:9\n", "error 201");
    EXPECT_EQ(Verify(Kind::damage), "");
    fs::remove(text);
    EXPECT_NE(Verify(Kind::damage).find("[s].[t].[text]: error "), std::string::npos);
    EXPECT_NE(Verify(Kind::damage, L"no such").find("there is nothing"), std::string::npos);
    Put(Path::utf8path(In(L"file")), "not a package, and longer than its header is");
    EXPECT_NE(Verify(Kind::damage, L"file").find("error 40283"), std::string::npos);
}

TEST_F(CheckTest, LeftoversAreFoundAndRemoved) {
    const fs::path root = Path::utf8path(m_directory);
    fs::create_directories(File("s/t/deep"));
    fs::create_directories(root / "qve_work_dead" / "x");
    fs::create_directories(root / "qve_work_mine");
    const FolderClaim claim((root / "qve_work_mine").wstring());
    ASSERT_TRUE(claim.IsHeld());
    const std::wstring temporary = OS::gettempdir();
    for (const wchar_t* name : {L"temp", L"temp/qve_temp_live", L"temp/qve_temp_dead"}) OS::mkdir(In(name), false);
    const FolderClaim live(In(L"temp/qve_temp_live"));
    OS::tempdir(In(L"temp/qve_temp_live"));
    for (const char* name : {"temp/qve_a1B2c3", "temp/qve_a1B2c4", "temp/qve_mine.txt"}) Put(root / name, "x");
    for (const char* name : {"temp/qve_a1B2c3", "temp/qve_mine.txt"}) {
        fs::last_write_time(root / name, fs::file_time_type::clock::now() - std::chrono::hours(25));
    }
    for (const char* name : {"s/t/n.9.data", "s/t/deep/x", "SYS/TABLES_ID.data.7", "stray"}) Put(File(name), "x");
    DatabaseCheck check(In(L"db"), nullptr);
    check.Verify();
    const std::string found = Of(check, Kind::leftover);
    for (const char* name : {"db/s/t/n.9.data", "db/s/t/deep", "db/SYS/TABLES_ID.data.7", "db/stray", "/qve_work_dead",
                             "/temp/qve_temp_dead", "/temp/qve_a1B2c3"}) {
        EXPECT_NE(found.find(name + std::string(": ")), std::string::npos) << name << "\n" << found;
    }
    EXPECT_EQ(Of(check, Kind::damage), "");
    EXPECT_TRUE(fs::exists(File("stray"))) << "looking changes nothing";
    check.RemoveLeftovers();
    for (const char* name : {"s/t/n.9.data", "s/t/deep", "SYS/TABLES_ID.data.7", "stray"}) {
        EXPECT_FALSE(fs::exists(File(name))) << name;
    }
    OS::tempdir(temporary);
    for (const char* name : {"qve_work_dead", "temp/qve_temp_dead", "temp/qve_a1B2c3"}) {
        EXPECT_FALSE(fs::exists(root / name)) << name;
    }
    for (const char* name : {"qve_work_mine", "temp/qve_temp_live", "temp/qve_a1B2c4", "temp/qve_mine.txt"}) {
        EXPECT_TRUE(fs::exists(root / name)) << name;
    }
    EXPECT_TRUE(fs::exists(File("empty")) && fs::exists(File("s/none"))) << "empty, and in the catalog";
    EXPECT_EQ(Verify(Kind::leftover), "");
    EXPECT_EQ(Verify(Kind::damage), "");
}

TEST_F(CheckTest, WhatCanBeReadIsSalvaged) {
    fs::remove(ColumnFile("t", "text", ".dict"));
    Put(ColumnFile("u", "n", ".data"), Get(ColumnFile("u", "n", ".data")).substr(0, 4));
    DatabaseCheck check(In(L"db"), nullptr);
    check.Verify();
    EXPECT_NE(Of(check, Kind::damage), "");
    check.Salvage(In(L"new"));
    EXPECT_NE(Of(check, Kind::salvaged).find("[s].[t]: 1 of 2 columns, 3 rows"), std::string::npos)
        << Of(check, Kind::salvaged);
    EXPECT_EQ(Verify(Kind::damage, L"new"), "");
    SimpleDatabase saved(In(L"new"));
    EXPECT_EQ(saved.GetTableNames(L"s").size(), 3u);
    EXPECT_EQ(Rows(*saved.LoadColumn(L"n", L"t", L"s")), (std::vector<std::string>{"1", "2", "3"}));
    EXPECT_EQ(saved.GetColumnNames(L"u", L"s").size(), 1u);
}

}  // namespace
}  // namespace qve
