#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>

#include "os/DataFile.h"
#include "os/MappedFile.h"
#include "os/OS.h"
#include "os/Path.h"
#include "os/PosixApi.h"
#include "os/ProcessInfo.h"
#include "os/WorkFolder.h"
#include "os/status.h"
#include "system/QuillonException.h"
#include "tests/support/ScratchFolder.h"

namespace qve {
namespace {

using testing::HasSubstr;
using testing::UnorderedElementsAre;

class OSTest : public testing::Test {
protected:
    std::wstring At(std::wstring_view name) const { return Path::join(m_directory, name); }
    std::wstring Write(std::wstring_view name, const std::string& text) const {
        std::ofstream(Path::utf8path(At(name)), std::ios::binary) << text;
        return At(name);
    }
    static std::string Read(const std::wstring& path) {
        std::ifstream file(Path::utf8path(path), std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(file), {});
    }

    const test::ScratchFolder m_scratch;
    const std::wstring m_directory = m_scratch.GetPath().wstring();
};

template <class Call>
QVE_RuntimeError failure(Call call) {
    try {
        call();
    } catch (const QVE_RuntimeError& fault) {
        return fault;
    }
    ADD_FAILURE() << "nothing was thrown";
    return QVE_RuntimeError(0, "");
}

TEST_F(OSTest, MakesAndRemovesDirectories) {
    OS::mkdir(At(L"a/b/c"), true);
    EXPECT_TRUE(Path::isdir(At(L"a/b/c")));
    OS::mkdir(At(L"a/b/c"), true);
    EXPECT_THAT(failure([&] { OS::mkdir(At(L"a"), false); }).GetText(), HasSubstr("Path exists."));
    EXPECT_THAT(failure([&] { OS::mkdir(At(L"x/y"), false); }).GetText(), HasSubstr(" - OS::mkdir(path=\""));
    Write(L"file", "");
    EXPECT_THROW(OS::mkdir(At(L"file/under"), true), QVE_RuntimeError);

    EXPECT_THROW(OS::rmdir(At(L"a"), false), QVE_RuntimeError);
    OS::rmdir(At(L"a"), true);
    EXPECT_FALSE(Path::exists(At(L"a")));
    EXPECT_THAT(failure([&] { OS::rmdir(At(L"a"), true); }).GetText(), HasSubstr(" - (path does not exist)"));
    EXPECT_THAT(failure([&] { OS::rmdir(At(L"file"), true); }).GetText(), HasSubstr(" - (path exists, is a file)"));
}

// What a link points to does not lie in the directory.
TEST_F(OSTest, RemovingFollowsNoLinks) {
    OS::mkdir(At(L"kept"), false);
    Write(L"kept/file", "text");
    OS::mkdir(At(L"gone"), false);
    ASSERT_EQ(::symlink(Path::utf8path(At(L"kept")).c_str(), Path::utf8path(At(L"gone/link")).c_str()), 0);
    OS::rmdir(At(L"gone"), true);
    EXPECT_TRUE(Path::isfile(At(L"kept/file")));
}

TEST_F(OSTest, ListsMovesAndCopiesFiles) {
    Write(L"one", "1");
    Write(L"zw\u00f6lf", "12");
    OS::mkdir(At(L"sub"), false);
    EXPECT_THAT(OS::listdir(m_directory), UnorderedElementsAre(L"one", L"zw\u00f6lf", L"sub"));
    for (const auto& entry : OS::listdir2(m_directory)) EXPECT_EQ(entry.directory, entry.name == L"sub");
    EXPECT_THROW(OS::listdir(At(L"none")), QVE_RuntimeError);

    OS::rename(At(L"one"), At(L"sub/two"));
    EXPECT_EQ(Read(At(L"sub/two")), "1");
    EXPECT_THAT(failure([&] { OS::rename(At(L"one"), At(L"x")); }).GetText(),
                testing::AllOf(HasSubstr(" - OS::rename(src=\""), HasSubstr("\", dst=\"")));
    OS::copy(At(L"zw\u00f6lf"), At(L"sub/two"));
    EXPECT_EQ(Read(At(L"sub/two")), "12");
    OS::touch(At(L"sub/two"));
    EXPECT_EQ(Read(At(L"sub/two")), "12");
    OS::touch(At(L"new"));
    EXPECT_TRUE(Path::isfile(At(L"new")));
    OS::unlink(At(L"new"));
    EXPECT_THROW(OS::unlink(At(L"new")), QVE_RuntimeError);
    EXPECT_THAT(failure([&] { OS::touch(At(L"no/file")); }).GetText(), HasSubstr(" - OS::touch(fopen path=\""));
}

// The root file system and /dev/shm are two, as a rule; where they are not, this is a plain rename.
TEST_F(OSTest, RenameCrossesFileSystems) {
    if (!Path::isdir(L"/dev/shm") || !Path::access(L"/dev/shm", W_OK)) GTEST_SKIP() << "no second file system";
    OS::mkdir(At(L"folder"), false);
    Write(L"folder/file", "text");
    const std::wstring target = OS::mkdtemp(L"/dev/shm");
    OS::rename(At(L"folder"), Path::join(target, L"moved"));
    EXPECT_FALSE(Path::exists(At(L"folder")));
    EXPECT_EQ(Read(Path::join(target, L"moved/file")), "text");
    OS::rmdir(target, true);
}

TEST_F(OSTest, TemporaryNames) {
    const std::wstring file = OS::mkstemp(m_directory, L"pre_", L".suffix");
    EXPECT_TRUE(Path::isfile(file));
    EXPECT_TRUE(Path::split(file).second.starts_with(L"pre_"));
    EXPECT_TRUE(file.ends_with(L".suffix"));
    EXPECT_NE(file, OS::mkstemp(m_directory, L"pre_", L".suffix"));
    EXPECT_TRUE(Path::isdir(OS::mkdtemp(m_directory, {}, L".dir")));
    EXPECT_THAT(failure([&] { OS::mkstemp(At(L"none")); }).GetText(), HasSubstr(" - OS::mkstemp(path=\""));
    EXPECT_THAT(failure([&] { OS::mkdtemp(At(L"none")); }).GetText(), HasSubstr(" - OS::mkdtemp(path=\""));

    const std::wstring before = OS::gettempdir();
    EXPECT_TRUE(before.ends_with(L"/corvane/temp"));
    OS::tempdir(At(L"not made"));
    EXPECT_EQ(OS::gettempdir(), At(L"not made"));
    EXPECT_FALSE(Path::exists(At(L"not made")));
    OS::tempdir(L"");
    EXPECT_EQ(OS::gettempdir(), before);
}

TEST_F(OSTest, AWorkFolderOutlivesOnlyItsOwnersLife) {
    const std::wstring left = At(L"qve_work_left");
    OS::mkdir(left, false);
    OS::touch(Path::join(left, L"file"));
    OS::mkdir(At(L"other"), false);
    std::wstring made;
    {
        const WorkFolder first(At(L""));
        made = first.GetPath();
        EXPECT_TRUE(Path::isdir(made));
        EXPECT_FALSE(Path::exists(left));  // nobody claimed it
        OS::touch(Path::join(made, L"file"));
        const WorkFolder second(At(L""));
        EXPECT_NE(second.GetPath(), made);
        EXPECT_TRUE(Path::exists(Path::join(made, L"file")));
    }
    EXPECT_FALSE(Path::exists(made));
    EXPECT_TRUE(Path::isdir(At(L"other")));
    OS::mkdir(left, false);
    {
        const FolderClaim claim(left);
        EXPECT_TRUE(claim.IsHeld());
        EXPECT_FALSE(FolderClaim(left).IsHeld());
        WorkFolder::RemoveAbandoned(At(L""), L"qve_work_");
        EXPECT_TRUE(Path::isdir(left));
    }
    WorkFolder::RemoveAbandoned(At(L""), L"qve_work_");
    EXPECT_FALSE(Path::exists(left));
}

TEST(PosixApiTest, MapsTheErrorsThatClientsKnow) {
    EXPECT_EQ(PosixApi::MapGeneralOSErrorToQveStatus(ENOSPC, 7), 100);
    EXPECT_EQ(PosixApi::MapGeneralOSErrorToQveStatus(EDQUOT, 7), 101);
    EXPECT_EQ(PosixApi::MapGeneralOSErrorToQveStatus(ENOMEM, 7), 102);
    EXPECT_EQ(PosixApi::MapGeneralOSErrorToQveStatus(EMFILE, 7), 103);
    EXPECT_EQ(PosixApi::MapGeneralOSErrorToQveStatus(ENFILE, 7), 103);
    EXPECT_EQ(PosixApi::MapGeneralOSErrorToQveStatus(EIO, 7), 7);
    EXPECT_THAT(failure([] { PosixApi::Throw(ENOSPC, 7, " - here"); }).GetText(),
                testing::AllOf(HasSubstr("QVE error=100; errno=28"), HasSubstr(" - here")));
}

TEST(PathTest, Normalises) {
    EXPECT_EQ(Path::normpath(L"/a//b/./c/../d/"), L"/a/b/d");
    EXPECT_EQ(Path::normpath(L"../../x/.."), L"../..");
    EXPECT_EQ(Path::normpath(L"/../../etc"), L"/etc");
    EXPECT_EQ(Path::normpath(L"a/.."), L"");
    EXPECT_EQ(Path::normpath(L""), L"");
    EXPECT_EQ(Path::normpath(L"//"), L"/");
    EXPECT_EQ(Path::normseparators(L"a\\b/c"), L"a/b/c");
    EXPECT_EQ(Path::abspath(L"x/../y"), Path::join(OS::getcwd(), L"y"));
}

TEST(PathTest, JoinsAndSplits) {
    EXPECT_EQ(Path::join(L"a", L"b"), L"a/b");
    EXPECT_EQ(Path::join(L"a/", L"b"), L"a/b");
    EXPECT_EQ(Path::join(L"a", L"/b"), L"/b");
    EXPECT_EQ(Path::join(L"", L"b"), L"b");
    EXPECT_EQ(Path::join(L"a", L""), L"a");
    using Parts = std::pair<std::wstring, std::wstring>;
    EXPECT_EQ(Path::split(L"/a/b"), Parts(L"/a", L"b"));
    EXPECT_EQ(Path::split(L"/a"), Parts(L"/", L"a"));
    EXPECT_EQ(Path::split(L"a"), Parts(L"", L"a"));
    EXPECT_EQ(Path::split(L"a/"), Parts(L"a", L""));
    EXPECT_EQ(Path::splitext(L"/d.x/a.b.c"), Parts(L"/d.x/a.b", L".c"));
    EXPECT_EQ(Path::splitext(L"/d.x/name"), Parts(L"/d.x/name", L""));
    EXPECT_EQ(Path::splitext(L"/d/.hidden"), Parts(L"/d/.hidden", L""));
}

TEST(PathTest, CleansNames) {
    EXPECT_EQ(Path::cleanname(L"a/b\\c:d*e?f\"g<h>i|j"), L"a_b_c_d_e_f_g_h_i_j");
    EXPECT_EQ(Path::cleanname(L"tab\there"), L"tab_here");
    EXPECT_EQ(Path::cleanname(L".."), L"_.");
    EXPECT_EQ(Path::cleanname(L""), L"_");
    EXPECT_EQ(Path::cleanname(L"gr\u00fcn name"), L"gr\u00fcn name");
}

TEST_F(OSTest, DataFileReservesRoomAndGivesItBack) {
    const std::wstring path = Write(L"data", "0123456789");
    {
        DataFile file(path, true);
        EXPECT_EQ(file.GetSize(), 10u);
        file.Resize(12, 65536);
        EXPECT_EQ(file.GetSize(), 12u);
        EXPECT_EQ(file.GetCapacity(), 65536u);
        struct stat status;
        ASSERT_EQ(::stat(Path::utf8path(path).c_str(), &status), 0);
        EXPECT_EQ(status.st_size, 65536);
        EXPECT_GE(status.st_blocks * 512, 65536);  // reserved, not sparse
    }
    EXPECT_EQ(Read(path), std::string("0123456789\0\0", 12));
    DataFile file(path, true);
    file.Resize(4);
    file.WriteAt(3, "xyz", 3);
    EXPECT_EQ(file.GetSize(), 6u);
    char bytes[6];
    file.Read(0, bytes, 6);
    EXPECT_EQ(std::string(bytes, 6), "012xyz");
    EXPECT_EQ(failure([&] { file.Read(4, bytes, 3); }).GetStatus(), status::DataFile_Read);
    EXPECT_EQ(failure([&] { DataFile(At(L"none"), false); }).GetStatus(), status::DataFile_Open);
    EXPECT_THROW(DataFile(m_directory, false), QVE_RuntimeError);
}

TEST_F(OSTest, DataFileWritesRenamesAndRemoves) {
    const std::wstring path = Write(L"data", "");
    {
        DataFile file(path, true);
        file.Write("hello", 5);
        file.Write(" world", 6);
        file.Flush();
        EXPECT_EQ(file.GetSize(), 11u);
        file.Rename(At(L"renamed"));
    }
    EXPECT_EQ(Read(At(L"renamed")), "hello world");
    { DataFile file(At(L"renamed"), true, true); }
    EXPECT_FALSE(Path::exists(At(L"renamed")));
    Write(L"kept", "x");
    {
        DataFile file(At(L"kept"), true, true);
        file.Rename(At(L"final"));
    }
    EXPECT_EQ(Read(At(L"final")), "x");
}

// A limit on the file's length stands in for a full disk: both refuse the reservation, and neither may fault later.
TEST_F(OSTest, GrowingWhereThereIsNoRoomFailsAtOnce) {
    DataFile file(Write(L"data", "0123"), true);
    rlimit before;
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
    const auto handler = ::signal(SIGXFSZ, SIG_IGN);
    rlimit small = before;
    small.rlim_cur = 1 << 20;
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
    const QVE_RuntimeError fault = failure([&] { file.Resize(4 << 20); });
    ::setrlimit(RLIMIT_FSIZE, &before);
    ::signal(SIGXFSZ, handler);
    EXPECT_THAT(fault.GetText(), HasSubstr("errno=27"));
    EXPECT_EQ(file.GetSize(), 4u);
    EXPECT_EQ(file.UpdateSize(), 4u);
}

TEST_F(OSTest, AFullDiskIsStatus100) {
    DataFile file(L"/dev/full", true);
    file.Write("text", 4);
    EXPECT_EQ(failure([&] { file.Flush(); }).GetStatus(), 100);
}

TEST_F(OSTest, MapsAndChecksTheSize) {
    std::string text(3 * MappedFile::Alignment(), 'a');
    text[MappedFile::Alignment()] = 'b';
    const auto file = MakeRef<DataFile>(Write(L"data", text), true);
    MappedFile::s_trackingMappedFiles = true;
    {
        const auto map = MakeRef<MappedFile>(file, MappedFile::Alignment(), MappedFile::Alignment(), true);
        EXPECT_EQ(*map->GetAddress(), 'b');
        *map->GetAddress() = 'c';
        const auto whole = MakeRef<MappedFile>(file, MappedFile::Alignment(), 10, false, true);
        EXPECT_EQ(*whole->GetAddress(), 'c');
        EXPECT_EQ(*(whole->GetAddress() - 1), 'a');
        const auto tracked = MappedFile::GetMappedFileFromAddress(map->GetAddress() + 5);
        ASSERT_TRUE(tracked);
        EXPECT_EQ(tracked->id, map->GetId());
        EXPECT_EQ(tracked->path, file->GetPath());
    }
    EXPECT_FALSE(MappedFile::GetMappedFileFromAddress(&text));
    MappedFile::s_trackingMappedFiles = false;
    for (const uint64_t limit : {3 * MappedFile::Alignment() + 1, ~uint64_t{0}}) {
        const auto fault = failure([&] { MakeRef<MappedFile>(file, 0, limit, false); });
        EXPECT_EQ(fault.GetStatus(), status::MappedFile_Size);
        EXPECT_THAT(fault.GetText(), HasSubstr(" - MappedFile::MappedFile(mmap: offset=0 limit="));
        EXPECT_FALSE(MappedFile::IsShortage(fault));
    }
    // The system grants no mapping of an offset within a page.
    EXPECT_EQ(failure([&] { MakeRef<MappedFile>(file, 1, 1, false); }).GetStatus(), status::MappedFile_Map);
}

TEST(MachineTest, ReportsItsFigures) {
    EXPECT_GT(MappedFile::Physical(), 1u << 20);
    EXPECT_GT(MappedFile::Available(), 0u);
    EXPECT_LE(MappedFile::Available(), MappedFile::Physical());
    EXPECT_GE(OS::Limits::get_descriptors_hard_limit(), OS::Limits::get_descriptors_soft_limit());
    const uint64_t limit = OS::Limits::get_descriptors_soft_limit();
    OS::Limits::set_descriptors_soft_limit(limit);
    EXPECT_EQ(OS::Limits::get_descriptors_soft_limit(), limit);

    const auto summary = ProcessInfo::ProcessSummary();
    ASSERT_EQ(summary.size(), 16u);
    EXPECT_EQ(summary.front().first, "cpu.user");
    EXPECT_EQ(summary.back().first, "sched.involuntary");
    EXPECT_THAT(summary.front().second, testing::MatchesRegex("[0-9]+\\.[0-9][0-9][0-9]"));
}

}  // namespace
}  // namespace qve
