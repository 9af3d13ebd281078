#include "storage/SimpleDatabase.h"

#include <algorithm>
#include <fstream>

#include "storage/DatabaseFamily.h"
#include "storage/DatabaseSchema.h"
#include "storage/DirectoryTableSpace.h"
#include "storage/MemoryDirectoryTableSpace.h"
#include "storage/PropertyFile.h"
#include "storage/WritableTableSpace.h"
#include "storage/status.h"
#include "system/VQLException.h"
#include "system/unicode.h"
#include "tests/storage/storage_fixture.h"

namespace qve {
namespace {

using Names = std::vector<std::wstring>;
using Texts = std::vector<std::string>;

bool Contains(const Names& names, const std::wstring& name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

enum class Kind { disk, memory };

/// A database that is reopened from what it left, on disk; in memory it stays the one object.
class SimpleDatabaseTest : public StorageTest, public testing::WithParamInterface<Kind> {
protected:
    static void SetUpTestSuite() { StorageTest::SetUpTestSuite(); }
    SimpleDatabaseTest() {
        if (GetParam() == Kind::memory) {
            m_database = MakeRef<SimpleDatabase>(RefCntPtr<TableSpace>(MakeRef<MemoryDirectoryTableSpace>(In(L"db"))));
        } else {
            m_database = MakeRef<SimpleDatabase>(In(L"db"));
        }
        m_database->CreateDatabase();
    }
    SimpleDatabase& Database() { return *m_database; }
    SimpleDatabase& Reopened() {
        if (GetParam() == Kind::disk) {
            m_database.reset();
            m_database = MakeRef<SimpleDatabase>(In(L"db"));
        }
        return *m_database;
    }

    RefCntPtr<SimpleDatabase> m_database;
};

INSTANTIATE_TEST_SUITE_P(Spaces, SimpleDatabaseTest, testing::Values(Kind::disk, Kind::memory));

TEST_P(SimpleDatabaseTest, ANewDatabaseDescribesItself) {
    SimpleDatabase& database = Reopened();
    EXPECT_EQ(database.GetMajorVersion(), L"1");
    EXPECT_EQ(database.GetSchemaNames(), (Names{L"SYS", L"TEMP"}));
    EXPECT_EQ(database.GetTableNames(L"SYS"),
              (Names{L"SCHEMAS", L"SCHEMAPROPS", L"TABLES", L"TABLEPROPS", L"COLUMNS", L"COLUMNPROPS", L"DUAL"}));
    EXPECT_EQ(database.GetColumnNames(L"TABLEPROPS", L"SYS"), (Names{L"ID", L"PARENT", L"KEY", L"VALUE", L"ACTIVE"}));
    EXPECT_EQ(
        Rows(*database.OpenSystemColumn(L"TABLES", L"NAME")),
        (Texts{"'SCHEMAS'", "'SCHEMAPROPS'", "'TABLES'", "'TABLEPROPS'", "'COLUMNS'", "'COLUMNPROPS'", "'DUAL'"}));
    EXPECT_EQ(Rows(*database.LoadColumn(L"ID", L"DUAL", L"SYS")), Texts{"1"});
    EXPECT_EQ(Rows(*database.LoadColumn(L"ACTIVE", L"SCHEMAS", L"SYS")), Texts{"t"});
    EXPECT_EQ(database.LoadColumn(L"NAME", L"COLUMNS", L"SYS")->GetCount(), 27u);
    EXPECT_EQ(StatusOf([&] { database.CreateDatabase(); }), status::SimpleDatabase_CreateDatabase);
}

TEST_P(SimpleDatabaseTest, SchemasTablesAndColumnsComeAndGo) {
    Database().CreateSchema(L"shop");
    Database().CreateTable(L"sale", L"shop");
    Database().CreateTable(L"empty", L"shop");
    Database().CreateColumn(L"price", L"sale", L"shop", LongProperties());
    Database().CreateColumn(L"item", L"sale", L"shop", TextProperties());
    const auto prices = MakeLongs({3, 1, 2});
    const auto items = MakeTexts({"pear", "apple", "pear"});
    Database().ReplaceColumn(L"price", L"sale", L"shop", *prices);
    Database().ReplaceColumn(L"item", L"sale", L"shop", *items);
    EXPECT_EQ(Rows(*prices), (Texts{"3", "1", "2"}));  // the source can still be read

    SimpleDatabase& database = Reopened();
    EXPECT_EQ(database.GetTableNames(L"shop"), (Names{L"sale", L"empty"}));
    EXPECT_EQ(database.GetColumnNames(L"sale", L"shop"), (Names{L"price", L"item"}));
    EXPECT_TRUE(database.GetColumnNames(L"empty", L"shop").empty());
    EXPECT_EQ(Rows(*database.LoadColumn(L"price", L"sale", L"shop")), (Texts{"3", "1", "2"}));
    EXPECT_EQ(Rows(*database.LoadColumn(L"item", L"sale", L"shop")), (Texts{"'pear'", "'apple'", "'pear'"}));
    EXPECT_EQ(database.DescribeColumn(L"item", L"sale", L"shop").text(usrpropkey::ordinal), L"1");
    EXPECT_EQ(database.GetColumnFiles(L"sale", L"shop").size(), 5u);
    EXPECT_EQ(database.DescribeTable(L"sale", L"shop").text(usrpropkey::name), L"sale");

    database.DropColumn(L"price", L"sale", L"shop", false, false);
    EXPECT_EQ(StatusOf([&] { database.LoadColumn(L"price", L"sale", L"shop"); }),
              status::SimpleDatabase_SelectColumnProperties);
    EXPECT_EQ(StatusOf([&] { database.DropSchema(L"shop", false, false); }), status::SimpleDatabase_DropSchema);
    database.DropTable(L"empty", L"shop", false, false);
    EXPECT_EQ(StatusOf([&] { database.DropTable(L"empty", L"shop", false, false); }),
              status::SimpleDatabase_SelectMetadataName);
    database.DropTable(L"empty", L"shop", false, true);
    database.DropSchema(L"shop", true, false);
    EXPECT_FALSE(database.HasSchema(L"shop"));
    EXPECT_FALSE(database.GetTableSpace(L"shop")->exists(L"shop"));
    database.DropSchema(L"shop", true, true);
    EXPECT_EQ(StatusOf([&] { database.DropSchema(L"shop", true, false); }), status::SimpleDatabase_DropSchema);
    EXPECT_EQ(Reopened().GetSchemaNames(), (Names{L"SYS", L"TEMP"}));
}

TEST_P(SimpleDatabaseTest, NamesAreUniqueAndNotTheSystems) {
    SimpleDatabase& database = Database();
    database.CreateSchema(L"s");
    database.CreateTable(L"t", L"s");
    database.CreateColumn(L"c", L"t", L"s", LongProperties());
    EXPECT_EQ(StatusOf([&] { database.CreateSchema(L"s"); }), status::SimpleDatabase_CreateSchema);
    EXPECT_EQ(StatusOf([&] { database.CreateSchema(L"SYS"); }), status::SimpleDatabase_CreateSchema);
    EXPECT_EQ(StatusOf([&] { database.CreateSchema(L"TEMP"); }), status::SimpleDatabase_CreateSchema);
    EXPECT_EQ(StatusOf([&] { database.CreateSchema(L""); }), status::SimpleDatabase_CreateTable_name);
    EXPECT_EQ(StatusOf([&] { database.CreateTable(L"t", L"s"); }), status::SimpleDatabase_CreateTable);
    EXPECT_EQ(StatusOf([&] { database.CreateTable(L"t", L"none"); }), status::SimpleDatabase_SelectMetadataName);
    EXPECT_EQ(StatusOf([&] { database.CreateTable(L"t", L"SYS"); }), status::SimpleDatabase_system);
    EXPECT_EQ(StatusOf([&] { database.CreateColumn(L"c", L"t", L"s", LongProperties()); }),
              status::SimpleDatabase_CreateColumn_exists);
    EXPECT_EQ(StatusOf([&] { database.CreateColumn(L".hidden", L"t", L"s", LongProperties()); }),
              status::SimpleDatabase_CreateColumn);
    usrprops untyped;
    untyped.set(usrpropkey::type, L"nonsense");
    EXPECT_NE(StatusOf([&] { database.CreateColumn(L"d", L"t", L"s", untyped); }), 0);
    EXPECT_EQ(database.GetColumnNames(L"t", L"s"), Names{L"c"});
    EXPECT_EQ(StatusOf([&] { database.GetSchema(L"none"); }), status::SimpleDatabase_GetSchema);
    EXPECT_EQ(StatusOf([&] { database.GetSchema(L"s")->GetTable(L"none"); }), status::DatabaseSchema_GetTable);
    EXPECT_EQ(database.GetSchema(L"s")->GetTable(L"t"), database.GetSchema(L"s")->GetTable(L"t"));
    EXPECT_EQ(StatusOf([&] { database.GetColumnFiles(L"none", L"s"); }), status::SimpleDatabase_GetColumnFiles);
}

TEST_P(SimpleDatabaseTest, OddNamesGetCleanFiles) {
    const Names odd = {L"a/b",
                       L"a_b",
                       L"..x",
                       L"..",
                       std::wstring(200, L'n'),
                       std::wstring(200, L'\x4E2D'),
                       L"tab\there",
                       L"\x1F600",
                       L"con.data",
                       L"a:b",
                       L"quote'\"",
                       L" "};
    Database().CreateSchema(L"up/../x");
    for (const std::wstring& name : odd) {
        if (name.front() == L'.') continue;
        Database().CreateTable(name, L"up/../x");
    }
    Database().CreateTable(L"t", L"up/../x");
    for (const std::wstring& name : odd) {
        if (name.front() == L'.') {
            EXPECT_EQ(StatusOf([&] { Database().CreateColumn(name, L"t", L"up/../x", LongProperties()); }),
                      status::SimpleDatabase_CreateColumn);
            continue;
        }
        Database().CreateColumn(name, L"t", L"up/../x", LongProperties());
        Database().ReplaceColumn(name, L"t", L"up/../x", *MakeLongs({static_cast<int>(name.front())}));
    }
    SimpleDatabase& database = Reopened();
    for (const std::wstring& name : database.GetColumnNames(L"t", L"up/../x")) {
        ASSERT_TRUE(Contains(odd, name));
        const auto column = database.LoadColumn(name, L"t", L"up/../x");
        EXPECT_EQ(Rows(*column), Texts{std::to_string(static_cast<int>(name.front()))});
        const std::wstring file = column->GetProperty(usrpropkey::data_file);
        EXPECT_LE(file.size(), 127u);
        EXPECT_EQ(file.find(L'/'), std::wstring::npos);
    }
    EXPECT_EQ(database.GetColumnNames(L"t", L"up/../x").size(), odd.size() - 2);
    EXPECT_EQ(database.DescribeColumn(L"a/b", L"t", L"up/../x").text(usrpropkey::type_file), L"a_b.type");
    EXPECT_EQ(database.DescribeColumn(L"a_b", L"t", L"up/../x").text(usrpropkey::type_file), L"a_b.1.type");
}

TEST_P(SimpleDatabaseTest, IdsAreNeverUsedAgain) {
    Database().CreateSchema(L"s");
    Database().CreateTable(L"t", L"s");
    Database().DropTable(L"t", L"s", false, false);
    Database().CreateTable(L"t", L"s");
    SimpleDatabase& database = Reopened();
    EXPECT_EQ(database.GetTableNames(L"s"), Names{L"t"});
    EXPECT_EQ(Rows(*database.OpenSystemColumn(L"TABLES", L"ID")), (Texts{"1", "2", "3", "4", "5", "6", "7", "8", "9"}));
    EXPECT_EQ(Rows(*database.OpenSystemColumn(L"TABLES", L"ACTIVE")),
              (Texts{"t", "t", "t", "t", "t", "t", "t", "f", "t"}));
    EXPECT_EQ(Rows(*database.OpenSystemColumn(L"TABLES", L"NAME")).back(), "'t'");
}

TEST_P(SimpleDatabaseTest, TheDictionariesOfTheCatalogAreSorted) {
    for (const wchar_t* name : {L"zebra", L"\x00E9t\x00E9", L"apple", L"Zoo"}) Database().CreateSchema(name);
    const auto names = Reopened().OpenSystemColumn(L"SCHEMAS", L"NAME");
    const usrheap& heap = *names->GetHeap();
    const usrtype& type = *names->GetType();
    unsigned entries = 0;
    for (auto token = heap.first(); heap.after(token) < heap.next(); token = heap.after(token), ++entries) {
        const usratom left = heap.get(token);
        const std::string kept(left.bytes());
        const usratom copy(&type, kept.data(), kept.size());
        EXPECT_LT(type.compare(copy, heap.get(heap.after(token))), 0);
    }
    EXPECT_EQ(entries, 4u);
    EXPECT_EQ(names->GetPrimitiveType(usrpropkey::comparable), L"oid");
}

TEST_P(SimpleDatabaseTest, AReplacedColumnTakesNewFilesAndShape) {
    Database().CreateSchema(L"s");
    Database().CreateTable(L"t", L"s");
    Database().CreateColumn(L"c", L"t", L"s", TextProperties());
    const Names before = Database().GetColumnFiles(L"t", L"s");
    const auto longs = MakeLongs({5, 6});
    longs->SetProperty(usrpropkey::unique, L"true");
    const auto reader = Database().LoadColumn(L"c", L"t", L"s");
    Database().ReplaceColumn(L"c", L"t", L"s", *longs);
    EXPECT_EQ(reader->GetCount(), 0u);

    SimpleDatabase& database = Reopened();
    EXPECT_EQ(Rows(*database.LoadColumn(L"c", L"t", L"s")), (Texts{"5", "6"}));
    EXPECT_TRUE(database.DescribeColumn(L"c", L"t", L"s").has(usrpropkey::unique));
    EXPECT_FALSE(database.DescribeColumn(L"c", L"t", L"s").has(usrpropkey::dict_file));
    const auto space = database.GetTableSpace(L"s");
    const Names after = database.GetColumnFiles(L"t", L"s");
    for (const std::wstring& file : before) EXPECT_EQ(space->exists(file), Contains(after, file)) << narrow(file);
    const std::wstring type = L"s/t/" + database.DescribeColumn(L"c", L"t", L"s").at(usrpropkey::type_file);
    EXPECT_EQ(ReadPropertyFile(*space, type).text(usrpropkey::type), L"long");

    // The present content under new properties: nothing is moved.
    const auto present = database.LoadColumn(L"c", L"t", L"s");
    present->SetProperty(usrpropkey::description, L"prices");
    database.ReplaceColumn(L"c", L"t", L"s", *present);
    EXPECT_EQ(database.GetColumnFiles(L"t", L"s"), after);
    EXPECT_EQ(Rows(*Reopened().LoadColumn(L"c", L"t", L"s")), (Texts{"5", "6"}));
    EXPECT_EQ(StatusOf([&] { Database().ReplaceColumn(L"c", L"t", L"s", *MakeRef<Column>(LongProperties())); }),
              status::SimpleDatabase_ReplaceColumn);
}

TEST_P(SimpleDatabaseTest, BigColumnsMoveFromTheirTemporaryFiles) {
    Database().CreateSchema(L"s");
    Database().CreateTable(L"t", L"s");
    Database().CreateColumn(L"c", L"t", L"s", LongProperties());
    auto data = MakeRef<TempFileDataStream>();
    data->SetPageLimit(4096);
    Column column(LongProperties(), data);
    column.Mark(10000, 0);
    ASSERT_TRUE(data->IsInFile());
    const std::wstring temporary = data->GetPath();
    Database().ReplaceColumn(L"c", L"t", L"s", column);
    EXPECT_EQ(Path::exists(temporary), GetParam() == Kind::memory);
    EXPECT_EQ(column.GetCount(), 10000u);
    const auto loaded = Reopened().LoadColumn(L"c", L"t", L"s");
    ASSERT_EQ(loaded->GetCount(), 10000u);
    loaded->Seek(9999, 1);
    EXPECT_EQ(loaded->GetInput().values<int>()[0], 9999);
}

TEST_P(SimpleDatabaseTest, TheTemporarySchemaGoesWithTheObject) {
    const std::wstring root = Database().GetTempRoot();
    for (const wchar_t* table : {L"t", L"odd/name"}) {
        Database().CreateTable(table, L"TEMP");
        Database().CreateColumn(L"second", table, L"TEMP", LongProperties());
        Database().CreateColumn(L"a first", table, L"TEMP", TextProperties());
        Database().ReplaceColumn(L"a first", table, L"TEMP", *MakeTexts({"x"}));
        EXPECT_EQ(Database().GetColumnNames(table, L"TEMP"), (Names{L"second", L"a first"}));
        EXPECT_EQ(Rows(*Database().LoadColumn(L"a first", table, L"TEMP")), Texts{"'x'"});
    }
    EXPECT_EQ(Database().GetTableNames(L"TEMP"), (Names{L"odd/name", L"t"}));
    Database().DropTable(L"t", L"TEMP", false, false);
    EXPECT_EQ(Database().GetTableNames(L"TEMP"), Names{L"odd/name"});
    EXPECT_EQ(StatusOf([&] { Database().GetColumnNames(L"t", L"TEMP"); }), status::SimpleDatabase_SelectTable);
    m_database.reset();
    EXPECT_FALSE(Path::exists(root));
}

TEST_P(SimpleDatabaseTest, SpacesAreAddedAndRemovedAsSchemas) {
    auto space = MakeRef<MemoryDirectoryTableSpace>(L"m");
    Database().AddTableSpace(L".VIEW", space);
    EXPECT_TRUE(Database().HasSchema(L".VIEW"));
    EXPECT_FALSE(Contains(Database().GetSchemaNames(), L".VIEW"));
    EXPECT_EQ(StatusOf([&] { Database().AddTableSpace(L".VIEW", space); }), status::SimpleDatabase_AddTableSpace);
    Database().RemoveTableSpace(L".VIEW");
    EXPECT_FALSE(Database().HasSchema(L".VIEW"));
    EXPECT_EQ(StatusOf([&] { Database().RemoveTableSpace(L".VIEW"); }), status::SimpleDatabase_RemoveTableSpace);
}

TEST_P(SimpleDatabaseTest, LongTextsInPropertiesAreKeptWhole) {
    usrprops properties = LongProperties();
    const std::wstring text(20000, L'\x1F600');
    properties.set(usrpropkey::description, text.substr(0, 10000));
    Database().CreateSchema(L"s");
    Database().CreateTable(L"t", L"s");
    Database().CreateColumn(L"c", L"t", L"s", properties);
    EXPECT_EQ(Reopened().DescribeColumn(L"c", L"t", L"s").text(usrpropkey::description).size(), 10000u);
    properties.set(usrpropkey::description, text);
    EXPECT_EQ(StatusOf([&] { Database().CreateColumn(L"d", L"t", L"s", properties); }),
              status::SimpleDatabase_InsertMetadata);
    EXPECT_EQ(Database().GetColumnNames(L"t", L"s"), Names{L"c"});
}

using DatabaseFileTest = StorageTest;

TEST_F(DatabaseFileTest, DroppingRemovesADatabaseAndNothingElse) {
    SimpleDatabase database(In(L"db"));
    EXPECT_EQ(StatusOf([&] { database.DropDatabase(true); }), status::SimpleDatabase_DropDatabase);
    database.CreateDatabase();
    SimpleDatabase other(In(L"db"));
    other.CreateSchema(L"s");
    EXPECT_EQ(StatusOf([&] { database.DropDatabase(false); }), status::SimpleDatabase_DropDatabase_cascade);
    database.DropDatabase(true);
    EXPECT_TRUE(OS::listdir(m_directory).empty());
    EXPECT_EQ(StatusOf([&] { other.GetSchemaNames(); }), status::SimpleDatabase_LoadCatalog);

    SimpleDatabase again(In(L"db"));
    again.CreateDatabase();
    EXPECT_EQ(other.GetSchemaNames(), (Names{L"SYS", L"TEMP"}));

    OS::mkdir(In(L"mine"), false);
    OS::touch(In(L"mine/letter"));
    SimpleDatabase foreign(In(L"mine"));
    EXPECT_EQ(StatusOf([&] { foreign.DropDatabase(true); }), status::SimpleDatabase_LoadCatalog);
    EXPECT_EQ(StatusOf([&] { foreign.GetSchemaNames(); }), status::SimpleDatabase_LoadCatalog);
    EXPECT_EQ(StatusOf([&] { foreign.CreateDatabase(); }), status::SimpleDatabase_CreateDatabase);
    EXPECT_TRUE(Path::exists(In(L"mine/letter")));
    EXPECT_EQ(OS::listdir(In(L"mine")), Names{L"letter"});
}

TEST_F(DatabaseFileTest, VersionsAboveTwoAreRefused) {
    const auto write = [&](const char* version) {
        std::ofstream(Path::utf8path(In(L"db/.database.type"))) << "version-major:" << version << "\nversion-minor:0\n";
    };
    SimpleDatabase(In(L"db")).CreateDatabase();
    write("2");
    EXPECT_EQ(SimpleDatabase(In(L"db")).GetSchemaNames().size(), 2u);
    write("3");
    try {
        SimpleDatabase refused(In(L"db"));
        ADD_FAILURE();
    } catch (const QVE_RangeError& fault) {
        EXPECT_EQ(fault.GetStatus(), 201);
        EXPECT_EQ(fault.GetText(), "3");
    }
    std::ofstream(Path::utf8path(In(L"file"))) << "not a database";
    EXPECT_EQ(StatusOf([&] { SimpleDatabase refused(In(L"file")); }), status::PackageOpen_short);
}

TEST_F(DatabaseFileTest, AnOverlayLeavesTheDatabaseAlone) {
    {
        SimpleDatabase database(In(L"db"));
        database.CreateDatabase();
        database.CreateSchema(L"s");
    }
    auto base = MakeRef<DirectoryTableSpace>(In(L"db"));
    {
        SimpleDatabase changed(RefCntPtr<TableSpace>(MakeRef<WritableTableSpace>(base)));
        changed.CreateTable(L"t", L"s");
        changed.CreateColumn(L"c", L"t", L"s", TextProperties());
        changed.ReplaceColumn(L"c", L"t", L"s", *MakeTexts({"x"}));
        EXPECT_EQ(Rows(*changed.LoadColumn(L"c", L"t", L"s")), Texts{"'x'"});
        changed.DropTable(L"t", L"s", true, false);
        EXPECT_TRUE(changed.GetTableNames(L"s").empty());
        changed.CreateTable(L"u", L"s");
        EXPECT_EQ(changed.GetTableNames(L"s"), Names{L"u"});
    }
    EXPECT_TRUE(SimpleDatabase(In(L"db")).GetTableNames(L"s").empty());
}

TEST_F(DatabaseFileTest, TheFamilyResolvesPathsWithinItsBounds) {
    EXPECT_EQ(DatabaseFamily::ResolveDatabasePath(L"/a/./b/../c", L""), L"/a/c");
    EXPECT_EQ(DatabaseFamily::ResolveDatabasePath(L"x\\y", L"/data"), L"/data/x/y");
    EXPECT_EQ(DatabaseFamily::ResolveDatabasePath(L"/data/x", L"/data"), L"/data/x");
    const auto code = [](const std::wstring& path, const std::wstring& access) {
        try {
            DatabaseFamily::ResolveDatabasePath(path, access);
        } catch (const VQLParseException& fault) {
            return fault.GetErrorCode();
        }
        return 0;
    };
    EXPECT_EQ(code(L"x", L""), 49001);
    EXPECT_EQ(code(L"../x", L"/data"), 49002);
    EXPECT_EQ(code(L"/database", L"/data"), 49002);
    EXPECT_EQ(code(L"/data/../etc", L"/data"), 49002);

    SimpleDatabase(In(L"db")).CreateDatabase();
    DatabaseFamily family(MakeRef<SimpleDatabase>(In(L"db")));
    EXPECT_EQ(family.AddDatabase(In(L"db")).get(), family.AddDatabase(In(L"db")).get());
    EXPECT_NE(family.AddDatabase(In(L"db")).get(), family.AddDatabase(In(L"./db")).get());
    EXPECT_THROW(family.GetDatabase(L"none"), VQLParseException);
    EXPECT_EQ(family.ResolveDataFilePath(L".database.type"), In(L"db/.database.type"));
    EXPECT_THROW(family.ResolveDataFilePath(L"no.csv"), VQLParseException);
    family.ReplaceDatabase(L"", nullptr);
    EXPECT_FALSE(family.HasDatabase(L""));
    EXPECT_FALSE(family.GetDefaultDatabase());
}

}  // namespace
}  // namespace qve
