#include <algorithm>
#include <cstring>
#include <filesystem>

#include "storage/DirectoryTableSpace.h"
#include "storage/MaterialisedTableSpace.h"
#include "storage/MemoryDirectoryTableSpace.h"
#include "storage/PropertyFile.h"
#include "storage/WritableTableSpace.h"
#include "storage/status.h"
#include "tests/storage/storage_fixture.h"

namespace qve {
namespace {

void Write(TableSpace& space, const std::wstring& path, const std::string& text) {
    if (!space.exists(path)) space.create(path);
    {
        const auto stream = space.open(path, true);
        stream->Resize(text.size());
        stream->Seek(0, text.size());
        std::memcpy(stream->GetOutput(0), text.data(), text.size());
    }
    space.close(path);
}

std::string Read(TableSpace& space, const std::wstring& path) {
    std::string text;
    const auto stream = space.open(path, false);
    const uint64_t size = stream->GetSize();
    stream->Seek(0, size);
    if (size > 0) text.assign(stream->GetInput(0), size);
    return text;
}

std::vector<std::wstring> Sorted(std::vector<std::wstring> names) {
    std::sort(names.begin(), names.end());
    return names;
}

using Names = std::vector<std::wstring>;

enum class Kind { directory, memory, overlay };

/// What holds of every space that can be written.
class WritableSpaceTest : public StorageTest, public testing::WithParamInterface<Kind> {
protected:
    static void SetUpTestSuite() { StorageTest::SetUpTestSuite(); }
    WritableSpaceTest() {
        switch (GetParam()) {
            case Kind::directory:
                m_space = MakeRef<DirectoryTableSpace>(m_directory);
                break;
            case Kind::memory:
                m_space = MakeRef<MemoryDirectoryTableSpace>(m_directory);
                break;
            case Kind::overlay:
                m_space = MakeRef<WritableTableSpace>(MakeRef<DirectoryTableSpace>(m_directory));
                break;
        }
    }
    RefCntPtr<TableSpace> m_space;
};

TEST_P(WritableSpaceTest, MakesMovesAndRemovesFiles) {
    TableSpace& space = *m_space;
    EXPECT_TRUE(space.exists(L""));
    space.mkdir(L"d");
    EXPECT_TRUE(space.isdir(L"d"));
    EXPECT_FALSE(space.isfile(L"d"));
    space.create(L"d/f");
    EXPECT_TRUE(space.isfile(L"d/f"));
    EXPECT_NE(StatusOf([&] { space.create(L"d/f"); }), 0);
    EXPECT_NE(StatusOf([&] { space.mkdir(L"d"); }), 0);
    EXPECT_NE(StatusOf([&] { space.open(L"d/none", false); }), 0);

    Write(space, L"d/f", "content");
    Write(space, L"d/g", "other");
    EXPECT_EQ(Read(space, L"d/f"), "content");
    space.rename(L"d/f", L"d/g");
    EXPECT_EQ(Read(space, L"d/g"), "content");
    EXPECT_EQ(space.listdir(L"d"), Names{L"g"});
    space.unlink(L"d/g");
    EXPECT_FALSE(space.exists(L"d/g"));
    EXPECT_TRUE(space.listdir(L"d").empty());

    space.mkdir(L"d/e");
    Write(space, L"d/e/deep", "x");
    space.rmdir(L"d");
    EXPECT_FALSE(space.exists(L"d/e/deep"));
    EXPECT_FALSE(space.exists(L"d"));
    space.closeall();
}

TEST_P(WritableSpaceTest, KeepsTheExactLengthOfWhatWasAppended) {
    m_space->create(L"f");
    m_space->open(L"f", true)->Append("abc", 3);
    m_space->close(L"f");
    EXPECT_EQ(Read(*m_space, L"f"), "abc");
    m_space->open(L"f", true)->Append("defg", 4);
    EXPECT_EQ(Read(*m_space, L"f"), "abcdefg");
    m_space->closeall();
    EXPECT_EQ(Read(*m_space, L"f"), "abcdefg");
}

INSTANTIATE_TEST_SUITE_P(Spaces, WritableSpaceTest, testing::Values(Kind::directory, Kind::memory, Kind::overlay));

using TableSpaceTest = StorageTest;

TEST_F(TableSpaceTest, ATemporaryDirectoryIsMadeWhenItIsNeeded) {
    DirectoryTableSpace space;
    const std::wstring root = space.root();
    EXPECT_TRUE(Path::isdir(root));
    Write(space, L"f", "x");
    space.closeall();
    space.rmdir(L"");
    EXPECT_FALSE(Path::exists(root));

    DirectoryTableSpace unused;
    unused.rmdir(L"");
}

TEST_F(TableSpaceTest, EachOpeningOfADirectoryHasAWindowOfItsOwn) {
    DirectoryTableSpace space(m_directory);
    Write(space, L"f", "0123456789");
    const auto first = space.open(L"f", false);
    const auto second = space.open(L"f", false);
    first->Seek(7, 1);
    second->Seek(2, 1);
    EXPECT_EQ(*first->GetInput(0), '7');
    EXPECT_EQ(*second->GetInput(0), '2');
    space.unlink(L"f");
    EXPECT_EQ(*first->GetInput(0), '7');  // a file in use lives on
}

// Files stay mapped between readers, but nobody reads what is no longer there.
TEST_F(TableSpaceTest, AMappedFileIsReadAsItIsNow) {
    DirectoryTableSpace space(m_directory);
    space.create(L"f");
    Write(space, L"f", std::string(200000, 'a'));
    const auto held = space.open(L"f", false);
    EXPECT_EQ(Read(space, L"f"), std::string(200000, 'a'));
    std::filesystem::resize_file(Path::utf8path(In(L"f")), 100);
    EXPECT_EQ(Read(space, L"f"), std::string(100, 'a'));
    Write(space, L"f", "other");
    EXPECT_EQ(Read(space, L"f").substr(0, 5), "other");
    space.unlink(L"f");
    EXPECT_NE(StatusOf([&] { space.open(L"f", false); }), 0);
    space.create(L"f");
    Write(space, L"f", "again");
    EXPECT_EQ(Read(space, L"f").substr(0, 5), "again");
}

TEST_F(TableSpaceTest, MemoryHandsOutTheOneStream) {
    MemoryDirectoryTableSpace space;
    EXPECT_FALSE(space.exists(L""));
    space.create(L"f");
    const auto reader = space.open(L"f", false);
    EXPECT_EQ(reader.get(), space.open(L"f", true).get());
    EXPECT_TRUE(reader->CanExtend());
    EXPECT_EQ(StatusOf([&] { space.create(L"./f"); }), status::MemoryDirectoryTableSpace_create);
    EXPECT_EQ(StatusOf([&] { space.open(L"g", false); }), status::MemoryDirectoryTableSpace_open);
    const std::wstring root = space.root();
    EXPECT_TRUE(space.exists(L""));
    space.rmdir(L"");
    EXPECT_FALSE(Path::exists(root));
    EXPECT_FALSE(space.exists(L"f"));
}

TEST_F(TableSpaceTest, TheOverlayLeavesItsBaseAlone) {
    auto base = MakeRef<DirectoryTableSpace>(m_directory);
    base->mkdir(L"d");
    Write(*base, L"d/a", "base a");
    Write(*base, L"d/b", "base b");
    std::wstring overlay;
    {
        WritableTableSpace space(base);
        EXPECT_EQ(space.root(), m_directory);
        space.unlink(L"d/a");
        EXPECT_FALSE(space.exists(L"d/a"));
        EXPECT_EQ(space.listdir(L"d"), Names{L"b"});
        overlay = space.root();
        EXPECT_NE(overlay, m_directory);

        space.create(L"d/a");
        EXPECT_EQ(Read(space, L"d/a"), "");
        EXPECT_EQ(Read(*base, L"d/a"), "base a");

        EXPECT_EQ(Read(space, L"d/b"), "base b");
        Write(space, L"d/b", "changed");
        EXPECT_EQ(Read(space, L"d/b"), "changed");
        EXPECT_EQ(Read(*base, L"d/b"), "base b");
        Write(space, L"d/c", "new");
        EXPECT_EQ(space.listdir(L"d"), (Names{L"a", L"b", L"c"}));

        // A directory of the overlay that was lost is made again, without what was in it.
        OS::rmdir(overlay, true);
        Write(space, L"d/e", "again");
        EXPECT_EQ(Read(space, L"d/e"), "again");

        space.rmdir(L"d");
        EXPECT_FALSE(space.exists(L"d"));
        EXPECT_FALSE(space.exists(L"d/b"));
        EXPECT_TRUE(base->exists(L"d/b"));
    }
    EXPECT_FALSE(Path::exists(overlay));
    EXPECT_EQ(Sorted(base->listdir(L"d")), (Names{L"a", L"b"}));
}

TEST_F(TableSpaceTest, TheOverlayRenamesOverAFileOfTheBase) {
    auto base = MakeRef<DirectoryTableSpace>(m_directory);
    base->mkdir(L"d");
    Write(*base, L"d/a", "old");
    WritableTableSpace space(base);
    Write(space, L"d/new", "new");
    space.rename(L"d/new", L"d/a");
    EXPECT_EQ(Read(space, L"d/a"), "new");
    EXPECT_EQ(space.listdir(L"d"), Names{L"a"});
    EXPECT_EQ(Read(*base, L"d/a"), "old");
}

class OneTable : public MaterialisedTableSpace::Source {
public:
    std::vector<std::wstring> GetColumnNames() const override { return {L"id", L"text"}; }
    RefCntPtr<Column> LoadColumn(const std::wstring& name) const override {
        return name == L"id" ? MakeLongs({1, 2, 3}) : MakeTexts({"a", "b", "a"});
    }
};

class OneTableFactory : public MaterialisedTableSpace::TableFactory {
public:
    std::vector<std::wstring> GetTableNames() const override { return {L"T"}; }
    RefCntPtr<MaterialisedTableSpace::Source> GetTable(const std::wstring&) override { return MakeRef<OneTable>(); }
};

TEST_F(TableSpaceTest, AViewShowsTablesAsFilesAndRefusesChanges) {
    OneTableFactory factory;
    MaterialisedTableSpace space(factory);
    EXPECT_TRUE(space.isdir(L"T"));
    EXPECT_FALSE(space.exists(L"U"));
    EXPECT_TRUE(space.isfile(L"T/id.data"));
    EXPECT_TRUE(space.isfile(L"T/text.dict"));
    EXPECT_FALSE(space.exists(L"T/id.dict"));
    EXPECT_FALSE(space.exists(L"T/id.other"));
    EXPECT_EQ(space.listdir(L"T"), (Names{L"id.type", L"id.data", L"text.type", L"text.data", L"text.dict"}));
    EXPECT_EQ(space.open(L"T/id.data", false)->GetSize(), 12u);
    EXPECT_EQ(ReadPropertyFile(space, L"T/text.type").text(usrpropkey::compression), L"heap");
    EXPECT_EQ(StatusOf([&] { space.open(L"T/id.data", true); }), status::MaterialisedTableSpace_open_writable);
    EXPECT_EQ(StatusOf([&] { space.open(L"T/no.data", false); }), status::MaterialisedTableSpace_open_unknown);
    EXPECT_EQ(StatusOf([&] { space.GetTable(L"U"); }), status::MaterialisedTableSpace_GetTable);
    EXPECT_EQ(StatusOf([&] { space.create(L"T/x"); }), status::MaterialisedTableSpace_create);
    EXPECT_EQ(StatusOf([&] { space.unlink(L"T/id.data"); }), status::MaterialisedTableSpace_unlink);
    EXPECT_EQ(StatusOf([&] { space.root(); }), status::MaterialisedTableSpace_root);
}

}  // namespace
}  // namespace qve
