#include <sys/wait.h>
#include <unistd.h>
#include <algorithm>

#include <atomic>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <functional>
#include <thread>

#include "os/FileLock.h"
#include "storage/SimpleDatabase.h"
#include "storage/status.h"
#include "system/TEvent.h"
#include "system/unicode.h"
#include "tests/storage/storage_fixture.h"

namespace qve {
namespace {

using Names = std::vector<std::wstring>;
using Texts = std::vector<std::string>;

class TransactionTest : public StorageTest {
protected:
    TransactionTest() {
        SimpleDatabase database(In(L"db"));
        database.CreateDatabase();
        database.CreateSchema(L"s");
        database.CreateTable(L"kept", L"s");
        database.CreateColumn(L"c", L"kept", L"s", LongProperties());
        database.ReplaceColumn(L"c", L"kept", L"s", *MakeLongs({1, 2, 3}));
    }
    RefCntPtr<SimpleDatabase> Open() const { return MakeRef<SimpleDatabase>(In(L"db")); }
    /// What lies in the database's directory, in any order of making.
    Names Files() const {
        Names files;
        const std::function<void(const std::wstring&)> walk = [&](const std::wstring& directory) {
            for (const OS::Entry& entry : OS::listdir2(Path::join(In(L"db"), directory))) {
                const std::wstring path = Path::join(directory, entry.name);
                files.push_back(path);
                if (entry.directory) walk(path);
            }
        };
        walk(L"");
        std::sort(files.begin(), files.end());
        return files;
    }
    static void Change(SimpleDatabase& database) {
        database.CreateTable(L"new", L"s");
        database.CreateColumn(L"text", L"new", L"s", TextProperties());
        database.ReplaceColumn(L"text", L"new", L"s", *MakeTexts({"a", "b"}));
        database.ReplaceColumn(L"c", L"kept", L"s", *MakeLongs({9}));
        database.CreateSchema(L"other");
    }
    static void ExpectRows(SimpleDatabase& database) {
        EXPECT_EQ(Rows(*database.LoadColumn(L"c", L"kept", L"s")), (Texts{"1", "2", "3"}));
    }
    static void ExpectUnchanged(SimpleDatabase& database) {
        EXPECT_EQ(database.GetTableNames(L"s"), Names{L"kept"});
        EXPECT_FALSE(database.HasSchema(L"other"));
        ExpectRows(database);
    }
    static void ExpectChanged(SimpleDatabase& database) {
        EXPECT_EQ(database.GetTableNames(L"s"), (Names{L"kept", L"new"}));
        EXPECT_TRUE(database.HasSchema(L"other"));
        EXPECT_EQ(Rows(*database.LoadColumn(L"text", L"new", L"s")), (Texts{"'a'", "'b'"}));
        EXPECT_EQ(Rows(*database.LoadColumn(L"c", L"kept", L"s")), Texts{"9"});
    }
    /// Runs `action` in a process of its own, which is killed when it returns.
    template <class F>
    static void RunAndKill(F action) {
        const pid_t child = ::fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            action();
            ::kill(::getpid(), SIGKILL);
        }
        int state = 0;
        ::waitpid(child, &state, 0);
        ASSERT_TRUE(WIFSIGNALED(state) && WTERMSIG(state) == SIGKILL);
    }
};

TEST_F(TransactionTest, OthersSeeAllOfItOrNothing) {
    const auto writer = Open();
    const auto other = Open();
    ExpectUnchanged(*other);
    {
        Database::Transaction transaction(*writer);
        Change(*writer);
        ExpectChanged(*writer);
        ExpectUnchanged(*other);
        std::thread([&] { ExpectUnchanged(*writer); }).join();
        transaction.Commit();
    }
    ExpectChanged(*writer);
    ExpectChanged(*other);
    ExpectChanged(*Open());
}

TEST_F(TransactionTest, ARollbackLeavesNothingBehind) {
    const auto database = Open();
    const Names before = Files();
    {
        Database::Transaction transaction(*database);
        Change(*database);
        database->DropTable(L"kept", L"s", true, false);
    }
    ExpectUnchanged(*database);
    EXPECT_EQ(Files(), before);
    ExpectUnchanged(*Open());
}

TEST_F(TransactionTest, AFailedPartSpoilsTheWhole) {
    const auto database = Open();
    database->BeginTransaction();
    database->CreateSchema(L"other");
    EXPECT_EQ(StatusOf([&] { database->CreateTable(L"kept", L"s"); }), status::SimpleDatabase_CreateTable);
    EXPECT_EQ(StatusOf([&] { database->EndTransaction(); }), status::SimpleDatabase_Transaction);
    ExpectUnchanged(*database);
    EXPECT_EQ(StatusOf([&] { database->EndTransaction(); }), status::SimpleDatabase_Transaction);
    database->DropTable(L"none", L"s", true, true);  // not there, and no failure
    database->BeginTransaction();
    database->DropTable(L"none", L"s", true, true);
    database->CreateSchema(L"other");
    database->EndTransaction();
    EXPECT_TRUE(Open()->HasSchema(L"other"));
}

TEST_F(TransactionTest, AKilledWriterLeavesTheDatabaseAsItWas) {
    const Names before = Files();
    RunAndKill([this] {
        SimpleDatabase database(In(L"db"));
        database.BeginTransaction();
        Change(database);
        database.DropTable(L"kept", L"s", true, false);
    });
    EXPECT_NE(Files(), before);
    ExpectUnchanged(*Open());
    EXPECT_EQ(Files(), before);
}

// A power cut may leave files that no list names. The first writer after the machine has started again removes them.
TEST_F(TransactionTest, WhatAPowerCutLeftGoesAndWhatUsersKeepStays) {
    Open()->CreateTable(L"other", L"s");
    const Names before = Files();
    const auto put = [this](const std::wstring& path) {
        std::filesystem::create_directories(std::filesystem::path(In(L"db/" + path)).parent_path());
        OS::touch(In(L"db/" + path));
    };
    const auto leave = [&] {
        for (const wchar_t* orphan :
             {L"s/kept/c.7.data", L"s/kept/d.dict", L"s/half/c.type", L"SYS/TABLES_ID.data.9"}) {
            put(orphan);
        }
        OS::mkdir(In(L"db/half"), false);
    };
    leave();
    Open()->DropTable(L"other", L"s", true, false);
    EXPECT_TRUE(Path::exists(In(L"db/s/half/c.type"))) << "the machine was not down since";

    const auto lock = [this] { return FileLock(In(L"db/.database.lock"), false); };
    lock().WriteBoot(1);
    for (const wchar_t* kept : {L"s/kept/notes.txt", L"texts/a.csv", L"s/mine/c.data", L"s/mine/c.csv", L"c.data"}) {
        put(kept);
    }
    EXPECT_EQ(Open()->GetTableNames(L"s"), Names{L"kept"});
    EXPECT_TRUE(Path::exists(In(L"db/s/half/c.type"))) << "reading changes nothing";
    Open()->CreateTable(L"other", L"s");
    Names after = before;
    for (const wchar_t* kept :
         {L"c.data", L"s/kept/notes.txt", L"s/mine", L"s/mine/c.csv", L"s/mine/c.data", L"texts", L"texts/a.csv"}) {
        after.push_back(kept);
    }
    std::sort(after.begin(), after.end());
    EXPECT_EQ(Files(), after);
    ExpectRows(*Open());

    // A catalog that lost rows does not say what is an orphan.
    leave();
    lock().WriteBoot(1);
    const std::filesystem::path ids(In(L"db/SYS/COLUMNS_ID.data"));
    std::filesystem::resize_file(ids, std::filesystem::file_size(ids) - 8);
    Open()->CreateSchema(L"more");
    EXPECT_TRUE(Path::exists(In(L"db/s/half/c.type")));
}

TEST_F(TransactionTest, WhatWasCommittedSurvivesAKill) {
    RunAndKill([this] {
        SimpleDatabase database(In(L"db"));
        Database::Transaction transaction(database);
        Change(database);
        transaction.Commit();
    });
    ExpectChanged(*Open());
}

// The commit's record stands, its renames do not: what a kill at the worst moment leaves.
TEST_F(TransactionTest, AnInterruptedCommitIsFinished) {
    const std::string root = Path::utf8path(In(L"db"));
    // Take the catalog files before and after a change, and put the directory in the state in between.
    OS::mkdir(In(L"before"), false);
    const Names catalog = OS::listdir(In(L"db/SYS"));
    for (const std::wstring& name : catalog) {
        if (Path::isfile(In(L"db/SYS/" + name))) OS::copy(In(L"db/SYS/" + name), In(L"before/" + name));
    }
    Open()->CreateSchema(L"other");
    std::string journal;
    for (const std::wstring& name : catalog) {
        if (!Path::isfile(In(L"db/SYS/" + name))) continue;
        if (name.find(L"COLUMN") == 0) continue;
        OS::rename(In(L"db/SYS/" + name), In(L"db/SYS/" + name + L".99"));
        OS::rename(In(L"before/" + name), In(L"db/SYS/" + name));
        journal += "r\tSYS/" + narrow(name) + ".99\tSYS/" + narrow(name) + "\n";
    }
    const auto reader = Open();
    EXPECT_FALSE(reader->HasSchema(L"other"));
    OS::touch(In(L"db/leftover"));
    std::ofstream(root + "/SYS/.undo") << "d\tother\n";
    std::ofstream(root + "/SYS/.journal") << journal << "u\tleftover\nu\tnot-there\n";
    const auto database = Open();
    EXPECT_TRUE(database->HasSchema(L"other"));
    EXPECT_TRUE(Path::isdir(In(L"db/other")));
    EXPECT_FALSE(Path::exists(In(L"db/leftover")));
    EXPECT_FALSE(Path::exists(In(L"db/SYS/.journal")));
    EXPECT_FALSE(Path::exists(In(L"db/SYS/.undo")));
    database->CreateTable(L"t", L"other");
    EXPECT_EQ(Open()->GetTableNames(L"other"), Names{L"t"});
}

TEST_F(TransactionTest, AListThatLeadsOutOfTheDatabaseIsRefused) {
    OS::touch(In(L"precious"));
    for (const char* line : {"u\t../precious\n", "u\t/etc/../precious\n", "r\tSYS/x\t../y\n", "d\t..\n"}) {
        std::ofstream(Path::utf8path(In(L"db/SYS/.journal"))) << line;
        EXPECT_EQ(StatusOf([&] { Open(); }), status::CatalogJournal_path) << line;
    }
    OS::unlink(In(L"db/SYS/.journal"));
    std::ofstream(Path::utf8path(In(L"db/SYS/.undo"))) << "f\t../precious\n";
    EXPECT_EQ(StatusOf([&] { Open(); }), status::CatalogJournal_path);
    EXPECT_TRUE(Path::exists(In(L"precious")));
}

TEST_F(TransactionTest, WritersOfOneDatabaseTakeTurns) {
    constexpr int each = 5;
    const auto shared = Open();
    std::vector<std::thread> threads;
    std::atomic<int> failures{0};
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([&, thread] {
            try {
                const auto database = thread < 2 ? shared : Open();
                for (int i = 0; i < each; ++i) {
                    const std::wstring name = L"t" + std::to_wstring(thread) + L"_" + std::to_wstring(i);
                    Database::Transaction transaction(*database);
                    database->CreateTable(name, L"s");
                    database->CreateColumn(L"c", name, L"s", LongProperties());
                    transaction.Commit();
                    if (database->LoadColumn(L"c", name, L"s")->GetCount() != 0) ++failures;
                    if (database->GetTableNames(L"s").size() < 2) ++failures;
                }
            } catch (const std::exception& fault) {
                ADD_FAILURE() << fault.what();
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(failures, 0);
    EXPECT_EQ(shared->GetTableNames(L"s").size(), 1u + 4 * each);
    EXPECT_EQ(Open()->GetTableNames(L"s").size(), 1u + 4 * each);
}

TEST_F(TransactionTest, ReadersGoOnWhileATransactionIsOpen) {
    const auto database = Open();
    TEvent open, done;
    std::thread writer([&] {
        Database::Transaction transaction(*database);
        Change(*database);
        open.Set();
        done.Wait();
        transaction.Commit();
    });
    open.Wait();
    ExpectUnchanged(*database);
    ExpectUnchanged(*Open());
    done.Set();
    writer.join();
    ExpectChanged(*database);
}

TEST_F(TransactionTest, AReaderKeepsTheColumnThatItLoaded) {
    const auto database = Open();
    const auto column = database->LoadColumn(L"c", L"kept", L"s");
    Open()->ReplaceColumn(L"c", L"kept", L"s", *MakeLongs({4}));
    EXPECT_EQ(Rows(*column), (Texts{"1", "2", "3"}));
    EXPECT_EQ(Rows(*database->LoadColumn(L"c", L"kept", L"s")), Texts{"4"});
    Open()->ReplaceColumn(L"c", L"kept", L"s", *MakeLongs({5, 5}));
    EXPECT_EQ(Rows(*database->LoadColumn(L"c", L"kept", L"s")), (Texts{"5", "5"}));
}

}  // namespace
}  // namespace qve
