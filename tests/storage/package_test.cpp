#include "storage/Package.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>

#include "os/status.h"
#include "storage/DirectoryTableSpace.h"
#include "storage/MemoryDirectoryTableSpace.h"
#include "storage/PkgTableSpace.h"
#include "storage/status.h"
#include "system/Operator.h"
#include "system/unicode.h"
#include "tests/storage/storage_fixture.h"

namespace qve {
namespace {

namespace fs = std::filesystem;

class PackageTest : public StorageTest {
protected:
    static std::string Get(const fs::path& path) {
        std::ifstream file(path, std::ios::binary);
        std::ostringstream bytes;
        bytes << file.rdbuf();
        return bytes.str();
    }
    static void Put(const fs::path& path, const std::string& bytes) {
        std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
    }
    fs::path Native(const std::wstring& name) const { return Path::utf8path(In(name)); }

    /// A tree with an empty file, an empty directory, files around the window of copying, and a name in composed form.
    std::map<std::string, std::string> MakeTree() const {
        std::map<std::string, std::string> files{{"empty", ""},
                                                 {"dir/one", "x"},
                                                 {"dir/deep/er/window", std::string(0x100000, 'w')},
                                                 {"dir/more", std::string(0x100001, 'm')},
                                                 {"\xC3\xA9t\xC3\xA9", "summer"}};
        fs::create_directories(Native(L"tree") / "nothing");
        for (const auto& [name, bytes] : files) {
            fs::create_directories((Native(L"tree") / name).parent_path());
            Put(Native(L"tree") / name, bytes);
        }
        return files;
    }
    void Pack(const RefCntPtr<ProgressCallback>& progress = nullptr) const {
        Package::Create(MakeRef<DirectoryTableSpace>(In(L"tree")), In(L"pkg"), progress);
    }
    /// The number with which a package of these bytes is refused when all of it is read; 0 when it is not.
    int StatusOfBytes(const std::string& bytes) const {
        Put(Native(L"bytes"), bytes);
        return StatusOf([&] {
            ReadAll(*MakeRef<PkgTableSpace>(In(L"bytes")), L"");
            Package::Open(MakeRef<DataFile>(In(L"bytes"), false));
        });
    }
    static uint64_t ReadAll(TableSpace& space, const std::wstring& path) {
        uint64_t sum = 0;
        for (const std::wstring& name : space.listdir(path)) {
            const std::wstring child = Path::join(path, name);
            if (space.isdir(child)) {
                sum += ReadAll(space, child);
                continue;
            }
            const RefCntPtr<DataStream> stream = space.open(child, false);
            for (uint64_t at = 0; at < stream->GetSize(); at += stream->GetLimit()) {
                stream->Seek(at, 1);
                sum += static_cast<unsigned char>(*stream->GetInput(0)) + stream->GetLimit();
            }
        }
        return sum;
    }
};

/// Puts a package together byte by byte.
struct Builder {
    std::string bytes = std::string(28, '\0');

    template <class T>
    static std::string Raw(T value) {
        return {reinterpret_cast<const char*>(&value), sizeof value};
    }
    static std::string Text(const std::u16string& text) {
        return Raw(static_cast<uint32_t>(text.size() + 1)) +
               std::string(reinterpret_cast<const char*>(text.c_str()), (text.size() + 1) * 2);
    }
    Package::Range Add(const std::string& node) {
        const Package::Range range{bytes.size(), bytes.size() + node.size()};
        bytes += node;
        return range;
    }
    static std::string FileNode(Package::Range data, const std::u16string& name = u"") {
        return Raw(uint32_t{0x7812CAF0}) + Raw(data.first) + Raw(data.second) + Text(name);
    }
    Package::Range AddFile(const std::string& data) {
        const Package::Range range = Add(data);
        return Add(FileNode(range));
    }
    static std::string DirectoryNode(const std::vector<std::pair<std::u16string, Package::Range>>& entries) {
        std::string node = Raw(uint32_t{0x7812CAF1}) + Raw(static_cast<uint32_t>(entries.size()));
        for (const auto& [name, range] : entries) node += Text(name) + Raw(range.first) + Raw(range.second);
        return node;
    }
    std::string Finish(Package::Range root, uint32_t version = 2, uint64_t magic = 0x0C0DA7E462010220) {
        const std::string header = Raw(magic) + Raw(version) + Raw(root.first) + Raw(root.second);
        bytes.replace(0, header.size(), header);
        return bytes;
    }
};

TEST_F(PackageTest, KeepsATreeAsItIs) {
    const auto files = MakeTree();
    Pack();
    ASSERT_TRUE(Package::IsPackage(In(L"pkg")));
    const auto space = MakeRef<PkgTableSpace>(In(L"pkg"));
    EXPECT_EQ(space->listdir(L""), (std::vector<std::wstring>{L"dir", L"empty", L"nothing", L"\xE9t\xE9"}));
    EXPECT_TRUE(space->listdir(L"nothing").empty());
    EXPECT_TRUE(space->isdir(L"dir/deep") && !space->isfile(L"dir/deep") && space->isfile(L"dir/one"));
    EXPECT_FALSE(space->exists(L"dir/two") || space->exists(L"dir/one/x"));
    for (const auto& [name, bytes] : files) {
        const RefCntPtr<DataStream> stream = space->open(widen(name), false);
        ASSERT_EQ(stream->GetSize(), bytes.size()) << name;
        stream->Seek(0, bytes.size());
        EXPECT_EQ(std::string(stream->GetInput(0), bytes.size()), bytes) << name;
        EXPECT_TRUE(bytes.empty() || reinterpret_cast<uintptr_t>(stream->GetInput(0)) % 16 == 0) << name;
    }
    // Decomposed, the name is another text and the same name.
    EXPECT_TRUE(space->isfile(L"e\x301te\x301"));
    EXPECT_EQ(StatusOf([&] { space->listdir(L"empty"); }), status::PkgTableSpace_listdir);
    EXPECT_EQ(StatusOf([&] { space->open(L"dir", false); }), status::PkgTableSpace_open);
    for (const auto change :
         {+[](TableSpace& s) { s.mkdir(L"x"); }, +[](TableSpace& s) { s.rmdir(L"dir"); },
          +[](TableSpace& s) { s.create(L"x"); }, +[](TableSpace& s) { s.rename(L"empty", L"x"); },
          +[](TableSpace& s) { s.unlink(L"empty"); }, +[](TableSpace& s) { s.open(L"empty", true); }}) {
        EXPECT_EQ(StatusOf([&] { change(*space); }), status::ReadOnlyTableSpace_NotWritable);
    }

    Package::Expand(MakeRef<DirectoryTableSpace>(In(L"out")), In(L"pkg"));
    for (const auto& [name, bytes] : files) EXPECT_TRUE(Get(Native(L"out") / name) == bytes) << name;
    EXPECT_TRUE(fs::is_directory(Native(L"out") / "nothing"));
    EXPECT_EQ(StatusOf([&] { Package::Expand(MakeRef<DirectoryTableSpace>(In(L"out")), In(L"pkg")); }),
              status::OS_mkdir);
    EXPECT_EQ(StatusOf([&] { Pack(); }), status::PackageCreate_exists);
}

TEST_F(PackageTest, ACancelledPackageIsNoFile) {
    MakeTree();
    /// Cancelled once so many files are done.
    class Progress : public ProgressCallback {
    public:
        explicit Progress(uint64_t files) : m_files(files) {}
        void SetProgress(uint64_t, uint64_t, uint64_t done, uint64_t total) override {
            m_done = done;
            m_total = total;
        }
        void GetProgress(uint64_t&, uint64_t&, uint64_t&, uint64_t&) const override {}
        void SetCancelled() override {}
        bool IsCancelled() const override { return m_done >= m_files; }
        uint64_t m_done = 0, m_total = 0;

    private:
        const uint64_t m_files;
    };
    for (const uint64_t files : {0, 1, 3}) {
        EXPECT_THROW(Pack(MakeRef<Progress>(files)), Operator::CancelledException) << files;
        EXPECT_FALSE(fs::exists(Native(L"pkg")));
    }
    const auto whole = MakeRef<Progress>(6);
    Pack(whole);
    EXPECT_EQ(whole->m_done, 5u);
    EXPECT_EQ(whole->m_total, 5u);
    EXPECT_THROW(Package::Expand(MakeRef<DirectoryTableSpace>(In(L"out")), In(L"pkg"), MakeRef<Progress>(2)),
                 Operator::CancelledException);
}

TEST_F(PackageTest, RefusesEachCorruptionWithItsNumber) {
    const auto package = [](auto make) {
        Builder b;
        const Package::Range root = make(b);
        return b.Finish(root);
    };
    const auto directory = [](Builder& b, std::vector<std::pair<std::u16string, Package::Range>> entries) {
        return b.Add(Builder::DirectoryNode(entries));
    };
    EXPECT_EQ(StatusOfBytes(package([&](Builder& b) { return directory(b, {{u"a", b.AddFile("data")}}); })), 0);
    EXPECT_EQ(StatusOfBytes(package([&](Builder& b) { return directory(b, {}); })), 0);
    for (const uint32_t version : {1u, 2u}) {
        Builder b;
        const Package::Range root = directory(b, {});
        EXPECT_EQ(StatusOfBytes(b.Finish(root, version)), 0);
    }
    for (const uint32_t version : {0u, 3u}) {
        Builder b;
        const Package::Range root = directory(b, {});
        EXPECT_EQ(StatusOfBytes(b.Finish(root, version)), status::PackageOpen_version);
        EXPECT_FALSE(Package::IsPackage(In(L"bytes")));
    }
    EXPECT_EQ(StatusOfBytes(std::string(27, '\0')), status::PackageOpen_short);
    EXPECT_EQ(StatusOfBytes(std::string(28, '\0')), status::PackageOpen_magic);
    EXPECT_EQ(StatusOfBytes(Builder().Finish({~uint64_t{0}, 0})), status::PackageOpen_range) << "never finished";
    EXPECT_EQ(StatusOfBytes(Builder().Finish({28, 1000})), status::PackageOpen_range) << "behind the end";
    EXPECT_EQ(StatusOfBytes(Builder().Finish({0, 28})), status::PackageOpen_range) << "in the header";
    EXPECT_EQ(StatusOfBytes(package([](Builder& b) { return b.Add(std::string(8, 'x')); })), status::PackageOpen_type);
    EXPECT_EQ(StatusOfBytes(package([](Builder& b) { return b.Add("abc"); })), status::PackageOpen_cut);

    const auto withChild = [&](auto child) {
        return package([&](Builder& b) { return directory(b, {{u"a", child(b)}}); });
    };
    EXPECT_EQ(StatusOfBytes(withChild([](Builder&) { return Package::Range{28, 100000}; })), status::PackageOpen_range);
    EXPECT_EQ(StatusOfBytes(withChild([](Builder& b) {
                  return Package::Range{b.bytes.size(), b.bytes.size() + 30};  // the parent itself
              })),
              status::PackageOpen_range);
    EXPECT_EQ(StatusOfBytes(withChild([](Builder& b) {
                  return b.Add(Builder::FileNode({28, 100000}));
              })),
              status::PackageOpen_data);
    EXPECT_EQ(StatusOfBytes(withChild([](Builder& b) {
                  return b.Add(Builder::FileNode({0, 28}));
              })),
              status::PackageOpen_data)
        << "the header as data";
    EXPECT_EQ(StatusOfBytes(withChild([](Builder& b) {
                  return b.Add(Builder::FileNode({28, 28}) + "x");
              })),
              status::PackageOpen_fileRest);
    EXPECT_EQ(StatusOfBytes(withChild([](Builder& b) { return b.Add(std::string(26, 'x')); })),
              status::PackageOpen_type)
        << "of the length of a file's node, read when the file is opened";
    EXPECT_EQ(StatusOfBytes(package([&](Builder& b) { return b.Add(Builder::DirectoryNode({}) + "rest"); })),
              status::PackageOpen_directoryRest);
    EXPECT_EQ(StatusOfBytes(package(
                  [](Builder& b) { return b.Add(Builder::Raw(uint32_t{0x7812CAF1}) + Builder::Raw(~uint32_t{0})); })),
              status::PackageOpen_cut)
        << "more entries than bytes";

    // Names that would lead elsewhere when the package is expanded.
    for (const std::u16string name : {u"", u".", u"..", u"../x", u"/x", u"a/b"}) {
        EXPECT_EQ(StatusOfBytes(package([&](Builder& b) {
                      return directory(b, {{name, b.AddFile("d")}});
                  })),
                  status::PackageOpen_name);
    }
    EXPECT_EQ(StatusOfBytes(package([&](Builder& b) {
                  const auto one = b.AddFile("1"), two = b.AddFile("2");
                  return directory(b, {{u"a", one}, {u"a", two}});
              })),
              status::PackageOpen_name);
    // Two entries for one node, and directories that share their children level by level: 2^30 nodes if followed.
    EXPECT_EQ(StatusOfBytes(package([&](Builder& b) {
                  const auto one = b.AddFile("1");
                  return directory(b, {{u"a", one}, {u"b", one}});
              })),
              status::PackageOpen_range);
    EXPECT_EQ(StatusOfBytes(package([&](Builder& b) {
                  Package::Range below = directory(b, {});
                  for (int level = 0; level < 30; ++level) below = directory(b, {{u"a", below}, {u"b", below}});
                  return below;
              })),
              status::PackageOpen_range);
    EXPECT_EQ(StatusOfBytes(package([&](Builder& b) {
                  Package::Range below = directory(b, {});
                  for (int level = 0; level < 100'000; ++level) below = directory(b, {{u"a", below}});
                  return below;
              })),
              status::PackageOpen_depth);
}

TEST_F(PackageTest, EveryCutAndFlippedBitIsRefusedOrRead) {
    {
        SimpleDatabase database(In(L"db"));
        database.CreateDatabase();
        database.CreateSchema(L"s");
        database.CreateTable(L"t", L"s");
        database.CreateColumn(L"long", L"t", L"s", LongProperties());
        database.CreateColumn(L"text", L"t", L"s", TextProperties());
        database.ReplaceColumn(L"long", L"t", L"s", *MakeLongs({1, 2, 3}));
        database.ReplaceColumn(L"text", L"t", L"s", *MakeTexts({"a", "b", "c"}));
        database.PackageDatabase(In(L"pkg"));
    }
    const std::string whole = Get(Native(L"pkg"));
    const auto read = [&](const std::string& bytes) {
        Put(Native(L"bytes"), bytes);
        return StatusOf([&] {
            SimpleDatabase database(In(L"bytes"));
            for (const std::wstring& column : database.GetColumnNames(L"t", L"s")) {
                Rows(*database.LoadColumn(column, L"t", L"s"));
            }
        });
    };
    ASSERT_EQ(read(whole), 0);
    for (size_t size = 0; size < whole.size(); size += 1 + size / 16) EXPECT_NE(read(whole.substr(0, size)), 0) << size;
    // Every byte of the tree, but only some of the contents, which have tests of their own.
    Builder tree;
    const auto small = tree.AddFile("contents");
    const auto inner = tree.Add(Builder::DirectoryNode({{u"one", small}}));
    const auto second = tree.AddFile("more");
    const std::string bytes = tree.Finish(tree.Add(Builder::DirectoryNode({{u"dir", inner}, {u"two", second}})));
    ASSERT_EQ(StatusOfBytes(bytes), 0);
    for (size_t size = 0; size < bytes.size(); ++size) EXPECT_NE(StatusOfBytes(bytes.substr(0, size)), 0) << size;
    unsigned refused = 0;
    for (size_t at = 0; at < bytes.size(); ++at) {
        for (int bit = 0; bit < 8; ++bit) {
            std::string flipped = bytes;
            flipped[at] = static_cast<char>(flipped[at] ^ (1 << bit));
            refused += StatusOfBytes(flipped) != 0;
        }
    }
    EXPECT_GT(refused, bytes.size() * 4);
    for (size_t at = 0; at < whole.size(); at += 499) {
        std::string flipped = whole;
        flipped[at] = static_cast<char>(~flipped[at]);
        read(flipped);
    }
}

TEST_F(PackageTest, ADatabaseIsReadInPlaceAndWrittenBesideIt) {
    {
        SimpleDatabase database(In(L"db"));
        database.CreateDatabase();
        database.CreateSchema(L"s");
        database.CreateTable(L"t", L"s");
        database.CreateColumn(L"n", L"t", L"s", LongProperties());
        database.ReplaceColumn(L"n", L"t", L"s", *MakeLongs({1, 2, 3}));
        database.PackageDatabase(In(L"pkg"));
        EXPECT_FALSE(database.IsPackaged());
    }
    const std::string before = Get(Native(L"pkg"));
    EXPECT_EQ(before.find("lock"), std::string::npos) << "what belongs to the running system stays outside";
    {
        SimpleDatabase package(In(L"pkg"));
        EXPECT_TRUE(package.IsPackaged());
        EXPECT_EQ(package.GetRoot(), In(L"pkg"));
        EXPECT_EQ(Rows(*package.LoadColumn(L"n", L"t", L"s")), (std::vector<std::string>{"1", "2", "3"}));
        package.CreateTable(L"more", L"s");
        package.CreateColumn(L"x", L"more", L"s", TextProperties());
        package.ReplaceColumn(L"x", L"more", L"s", *MakeTexts({"a", "b"}));
        package.ReplaceColumn(L"n", L"t", L"s", *MakeLongs({7}));
        EXPECT_EQ(Rows(*package.LoadColumn(L"n", L"t", L"s")), (std::vector<std::string>{"7"}));
        EXPECT_EQ(package.GetPath(), In(L"pkg"));
        // What was written goes along into what is made of it.
        package.PackageDatabase(In(L"second"));
        package.UnpackageDatabase(In(L"folder"));
    }
    EXPECT_EQ(Get(Native(L"pkg")), before);
    EXPECT_EQ(SimpleDatabase(In(L"pkg")).GetTableNames(L"s"), (std::vector<std::wstring>{L"t"}));
    for (const std::wstring changed : {L"second", L"folder"}) {
        SimpleDatabase database(In(changed));
        EXPECT_EQ(database.IsPackaged(), changed == L"second");
        EXPECT_EQ(Rows(*database.LoadColumn(L"x", L"more", L"s")), (std::vector<std::string>{"'a'", "'b'"}));
        EXPECT_EQ(Rows(*database.LoadColumn(L"n", L"t", L"s")), (std::vector<std::string>{"7"}));
    }
    SimpleDatabase folder(In(L"folder"));
    folder.DropTable(L"t", L"s", false, false);
    EXPECT_EQ(SimpleDatabase(In(L"folder")).GetTableNames(L"s"), (std::vector<std::wstring>{L"more"}));
}

}  // namespace
}  // namespace qve
