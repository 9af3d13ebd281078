#include <gtest/gtest.h>

#include <fstream>

#include "algebra/LeafTable.h"
#include "algebra/Scan.h"
#include "commands/CreateFolder.h"
#include "commands/CreateSchema.h"
#include "commands/CreateTable.h"
#include "commands/CreateTableFromFlow.h"
#include "commands/DescribeTable.h"
#include "commands/DropColumn.h"
#include "commands/DropDatabase.h"
#include "commands/DropFolder.h"
#include "commands/DropSchema.h"
#include "commands/DropTable.h"
#include "commands/ShowCollations.h"
#include "commands/ShowDatabase.h"
#include "commands/ShowDatabases.h"
#include "commands/ShowFolder.h"
#include "commands/ShowSchemas.h"
#include "commands/ShowTables.h"
#include "commands/status.h"
#include "storage/DatabaseSchema.h"
#include "storage/status.h"
#include "system/unicode.h"
#include "tests/storage/storage_fixture.h"

namespace qve {
namespace {

using Texts = std::vector<std::string>;
using Names = std::vector<std::wstring>;

class CommandsTest : public StorageTest {
protected:
    CommandsTest() : m_database(MakeRef<SimpleDatabase>(In(L"db"))) { m_database->CreateDatabase(); }

    template <class T, class... Args>
    static RefCntPtr<Namespace> Run(Args... args) {
        return MakeRef<T>(std::move(args)...)->Execute(1024);
    }
    static Texts Get(const RefCntPtr<Namespace>& table, const std::wstring& column) {
        return Rows(*table->GetColumn(column));
    }
    /// A table [s].[t] of two columns and three rows.
    void MakeTable() {
        m_database->CreateSchema(L"s");
        m_database->CreateTable(L"t", L"s");
        m_database->CreateColumn(L"text", L"t", L"s", TextProperties());
        m_database->CreateColumn(L"long", L"t", L"s", LongProperties());
        m_database->ReplaceColumn(L"text", L"t", L"s", *MakeTexts({"a", "b", "a"}));
        m_database->ReplaceColumn(L"long", L"t", L"s", *MakeLongs({1, 2, 3}));
    }
    RefCntPtr<Database> Db() const { return m_database; }
    RefCntPtr<Scan> ScanOfTable() const {
        const auto table = MakeRef<LeafTable>(*m_database->GetSchema(L"s"), L"t");
        return MakeRef<Scan>(table, table->GetColumnNames());
    }

    RefCntPtr<SimpleDatabase> m_database;
};

TEST_F(CommandsTest, DefinitionsChangeTheCatalog) {
    EXPECT_FALSE(Run<CreateSchema>(Db(), L"s"));
    usrprops type;
    type.set(usrpropkey::type, L"varchar");
    std::vector<CreateTable::ColumnDefinition> columns = {{L"c", LongProperties()}, {L"d", type}};
    Run<CreateTable>(Db(), L"s", L"t", columns);
    EXPECT_EQ(m_database->GetColumnNames(L"t", L"s"), (Names{L"c", L"d"}));
    EXPECT_EQ(m_database->LoadColumn(L"d", L"t", L"s")->GetCount(), 0u);
    EXPECT_EQ(m_database->DescribeColumn(L"d", L"t", L"s").text(usrpropkey::compression), L"heap");

    columns.emplace_back(L".bad", LongProperties());
    EXPECT_EQ(StatusOf([&] { Run<CreateTable>(Db(), L"s", L"u", columns); }), status::SimpleDatabase_CreateColumn);
    EXPECT_EQ(m_database->GetTableNames(L"s"), Names{L"t"});

    Run<DropColumn>(Db(), L"s", L"t", L"c", false, false);
    EXPECT_EQ(m_database->GetColumnNames(L"t", L"s"), Names{L"d"});
    EXPECT_NE(StatusOf([&] { Run<DropSchema>(Db(), L"s", false, false); }), 0);
    Run<DropTable>(Db(), L"s", L"t", false, false);
    Run<DropTable>(Db(), L"s", L"t", false, true);
    EXPECT_NE(StatusOf([&] { Run<DropTable>(Db(), L"s", L"t", false, false); }), 0);
    Run<DropSchema>(Db(), L"s", false, false);
    EXPECT_FALSE(m_database->HasSchema(L"s"));
}

TEST_F(CommandsTest, ATableIsMadeOfTheRowsOfAPlan) {
    MakeTable();
    EXPECT_FALSE(Run<CreateTableFromFlow>(Db(), L"s", L"copy", RefCntPtr<Namespace>(ScanOfTable())));
    SimpleDatabase reopened(In(L"db"));
    EXPECT_EQ(reopened.GetColumnNames(L"copy", L"s"), (Names{L"text", L"long"}));
    EXPECT_EQ(Rows(*reopened.LoadColumn(L"text", L"copy", L"s")), (Texts{"'a'", "'b'", "'a'"}));
    EXPECT_EQ(Rows(*reopened.LoadColumn(L"long", L"copy", L"s")), (Texts{"1", "2", "3"}));
    EXPECT_EQ(StatusOf([&] { CreateTableFromFlow::Do(Db(), L"s", L"copy", ScanOfTable()); }),
              status::CreateTableFromFlow_exists);
    EXPECT_EQ(StatusOf([&] { CreateTableFromFlow::Do(Db(), L"none", L"copy", ScanOfTable()); }),
              status::SimpleDatabase_SelectMetadataName);
}

TEST_F(CommandsTest, ACancelledPlanLeavesNoTable) {
    MakeTable();
    const auto scan = ScanOfTable();
    scan->SetCancelled();
    const Names before = OS::listdir(In(L"db/s"));
    EXPECT_THROW(CreateTableFromFlow::Do(Db(), L"s", L"copy", scan), Operator::CancelledException);
    EXPECT_EQ(m_database->GetTableNames(L"s"), Names{L"t"});
    EXPECT_EQ(OS::listdir(In(L"db/s")), before);
}

TEST_F(CommandsTest, FoldersComeAndGo) {
    const std::wstring deep = In(L"a/b/c");
    EXPECT_NE(StatusOf([&] { Run<CreateFolder>(deep, false); }), 0);
    Run<CreateFolder>(deep, true);
    Run<CreateFolder>(deep, false);  // it is there
    OS::touch(In(L"a/file"));
    EXPECT_NE(StatusOf([&] { Run<DropFolder>(In(L"a"), 0u); }), 0);
    Run<DropFolder>(deep, DropFolder::parents);
    EXPECT_FALSE(Path::exists(In(L"a/b")));
    EXPECT_TRUE(Path::exists(In(L"a/file")));
    Run<DropFolder>(In(L"a"), DropFolder::cascade);
    EXPECT_FALSE(Path::exists(In(L"a")));
    EXPECT_NE(StatusOf([&] { Run<CreateFolder>(In(L"db/.database.type"), false); }), 0);
}

TEST_F(CommandsTest, DroppingADatabaseSparesWhatIsNone) {
    const std::wstring lost = In(L"lost_and_found");
    for (const wchar_t* expected : {L"lost_and_found/database_1", L"lost_and_found/database_2"}) {
        std::ofstream(Path::utf8path(In(L"file"))) << "letter";
        EXPECT_EQ(StatusOf([&] { Run<DropDatabase>(In(L"file"), false, true, L""); }), status::DropDatabase_file);
        Run<DropDatabase>(In(L"file"), false, true, lost);
        EXPECT_FALSE(Path::exists(In(L"file")));
        EXPECT_TRUE(Path::isfile(In(expected)));
    }
    OS::mkdir(In(L"folder"), false);
    EXPECT_EQ(StatusOf([&] { Run<DropDatabase>(In(L"folder"), true, true, lost); }),
              status::SimpleDatabase_LoadCatalog);
    EXPECT_EQ(StatusOf([&] { Run<DropDatabase>(In(L"none"), false, true, lost); }),
              status::SimpleDatabase_DropDatabase);
    Run<DropDatabase>(In(L"none"), true, true, lost);
    m_database->CreateSchema(L"s");
    EXPECT_NE(StatusOf([&] { Run<DropDatabase>(In(L"db"), false, false, lost); }), 0);
    Run<DropDatabase>(In(L"db"), false, true, lost);
    EXPECT_FALSE(Path::exists(In(L"db")));
}

TEST_F(CommandsTest, ListingsShowTheCatalog) {
    MakeTable();
    m_database->CreateTable(L"none", L"s");
    EXPECT_EQ(Get(Run<ShowSchemas>(Db()), L"SCHEMAS_NAME"), (Texts{"'SYS'", "'s'", "'TEMP'"}));

    const auto tables = Run<ShowTables>(Db(), L"");
    EXPECT_EQ(Get(tables, L"TABLES_SCHEMA"), (Texts{"'s'", "'s'"}));
    EXPECT_EQ(Get(tables, L"TABLES_NAME"), (Texts{"'t'", "'none'"}));
    EXPECT_EQ(Get(tables, L"TABLES_COLUMNS"), (Texts{"2", "0"}));
    EXPECT_EQ(Get(tables, L"TABLES_ROWS"), (Texts{"3", "0"}));
    EXPECT_EQ(tables->GetColumn(L"TABLES_ROWS")->GetProperty(usrpropkey::ordinal), L"3");
    EXPECT_NE(StatusOf([&] { Run<ShowTables>(Db(), L"nowhere"); }), 0);
    EXPECT_EQ(Get(Run<ShowTables>(Db(), L"SYS"), L"TABLES_ROWS").back(), "1");

    const auto columns = Run<DescribeTable>(Db(), L"s", L"t");
    EXPECT_EQ(Get(columns, L"COLUMNS_NAME"), (Texts{"'text'", "'long'"}));
    EXPECT_EQ(Get(columns, L"COLUMNS_TYPE").back(), "'long'");
    EXPECT_NE(Get(columns, L"COLUMNS_PROPERTIES").front().find("compression=heap"), std::string::npos);
    EXPECT_NE(StatusOf([&] { Run<DescribeTable>(Db(), L"s", L"nothing"); }), 0);

    const auto collations = Get(Run<ShowCollations>(), L"COLLATIONS_NAME");
    EXPECT_NE(std::find(collations.begin(), collations.end(), "'binary'"), collations.end());
    const auto keys = Get(Run<ShowDatabase>(Db()), L"DATABASE_KEY");
    EXPECT_NE(std::find(keys.begin(), keys.end(), "'version-major'"), keys.end());
}

TEST_F(CommandsTest, ListingsShowFoldersAndDatabases) {
    OS::mkdir(In(L"deep"), false);
    SimpleDatabase(In(L"deep/other")).CreateDatabase();
    OS::touch(In(L"note.txt"));
    EXPECT_EQ(Get(Run<ShowDatabases>(m_directory, false), L"DATABASES_NAME"), Texts{"'db'"});
    const auto databases = Run<ShowDatabases>(m_directory, true);
    EXPECT_EQ(Get(databases, L"DATABASES_NAME"), (Texts{"'db'", "'deep/other'"}));
    EXPECT_GT(std::stoll(Get(databases, L"DATABASES_SIZE").front()), 1000);
    std::ostringstream today;
    today << datetime::utc().day();
    EXPECT_EQ(Get(databases, L"DATABASES_MTIME").front().substr(0, 8), today.str().substr(0, 8));
    EXPECT_EQ(StatusOf([&] { Run<ShowDatabases>(In(L"none"), false); }), status::ShowDatabases_path);

    const auto folder = Run<ShowFolder>(m_directory, L"", ShowFolder::counts);
    EXPECT_EQ(Get(folder, L"FOLDER_NAME"), (Texts{"'db'", "'deep'", "'note.txt'"}));
    EXPECT_EQ(Get(folder, L"FOLDER_TYPE"), (Texts{"'database'", "'folder'", "'file'"}));
    EXPECT_EQ(Get(folder, L"FOLDER_SIZE"), (Texts{"NULL", "NULL", "0"}));
    EXPECT_EQ(Get(folder, L"FOLDER_COUNT")[1], "1");
    EXPECT_EQ(Get(Run<ShowFolder>(m_directory, L"%.data", ShowFolder::cascade), L"FOLDER_NAME").size(), 27u + 27u);
    EXPECT_EQ(StatusOf([&] { Run<ShowFolder>(In(L"note.txt"), L"", 0u); }), status::ShowFolder_path);
}

TEST_F(CommandsTest, PatternsMatch) {
    const auto matches = [](const wchar_t* pattern, const wchar_t* name) {
        return ShowFolder(L"", pattern, 0).Matches(name);
    };
    EXPECT_TRUE(matches(L"", L"anything"));
    EXPECT_TRUE(matches(L"%", L""));
    EXPECT_TRUE(matches(L"a%b%c", L"a--b-b--c"));
    EXPECT_FALSE(matches(L"a%b%c", L"a--b-b--"));
    EXPECT_TRUE(matches(L"_x", L"\x1F600x"));
    EXPECT_FALSE(matches(L"_", L""));
    EXPECT_TRUE(matches(L"100\\%", L"100%"));
    EXPECT_FALSE(matches(L"100\\%", L"1000"));
    EXPECT_FALSE(matches(L"%a", std::wstring(10000, L'b').c_str()));
}

}  // namespace
}  // namespace qve
