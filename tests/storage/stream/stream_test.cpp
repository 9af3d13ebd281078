#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <fstream>
#include <random>
#include <thread>

#include "os/OS.h"
#include "os/Path.h"
#include "os/status.h"
#include "storage/stream/ConstantDataStream.h"
#include "storage/stream/FileDataStream.h"
#include "storage/stream/MemoryDataStream.h"
#include "storage/stream/ReadOnlyDataStream.h"
#include "storage/stream/ResidentDataStream.h"
#include "storage/stream/TempFileDataStream.h"
#include "storage/stream/status.h"
#include "system/CancelScope.h"
#include "system/Operator.h"
#include "system/ProgressCallback.h"
#include "system/QuillonException.h"
#include "tests/support/ScratchFolder.h"

namespace qve {
namespace {

using testing::HasSubstr;

template <class F>
int status_of(F action) {
    try {
        action();
    } catch (const QuillonException& fault) {
        return fault.GetStatus();
    }
    return 0;
}

std::string contents(DataStream& stream) {
    std::string bytes;
    while (bytes.size() < stream.GetSize()) {
        const uint64_t limit = stream.Seek(bytes.size(), 1);
        bytes.append(stream.GetInput(0), limit);
    }
    return bytes;
}

RefCntPtr<DataStream> memory(const std::string& bytes) {
    return MakeRef<MemoryDataStream>(bytes.data(), bytes.size());
}

class StreamTest : public testing::Test {
protected:
    RefCntPtr<DataFile> NewFile(const std::string& bytes = {}, bool writable = true) const {
        const std::wstring path = OS::mkstemp(m_directory);
        {
            DataFile file(path, true);
            file.Write(bytes.data(), bytes.size());
        }
        return MakeRef<DataFile>(path, writable);
    }
    RefCntPtr<FileDataStream> NewStream(const std::string& bytes = {}) const {
        return FileDataStream::OpenStream(NewFile(bytes), 0, bytes.size());
    }
    static uint64_t LengthOnDisk(const FileDataStream& stream) {
        struct stat status;
        return ::fstat(stream.GetFile()->GetDescriptor(), &status) == 0 ? static_cast<uint64_t>(status.st_size) : 0;
    }

    const test::ScratchFolder m_scratch;
    const std::wstring m_directory = m_scratch.GetPath().wstring();
};

// Every kind of stream that can be written must behave like a plain string.
class WritableStreamTest : public StreamTest, public testing::WithParamInterface<int> {
protected:
    RefCntPtr<DataStream> Make() const {
        switch (GetParam()) {
            case 0:
                return MakeRef<MemoryDataStream>();
            case 1:
                return NewStream();
            case 2:
                return MakeRef<TempFileDataStream>();
            case 3: {
                auto stream = MakeRef<TempFileDataStream>();
                stream->SetPageLimit(5000);
                return stream;
            }
            default:
                return MakeRef<ResidentDataStream>(MakeRef<TempFileDataStream>());
        }
    }
};

INSTANTIATE_TEST_SUITE_P(Kinds, WritableStreamTest, testing::Range(0, 5));

TEST_P(WritableStreamTest, BehavesLikeAString) {
    std::mt19937 random(20240531);
    const auto stream = Make();
    std::string expected;
    for (int step = 0; step < 400; ++step) {
        const auto up_to = [&](uint64_t n) { return std::uniform_int_distribution<uint64_t>(0, n)(random); };
        switch (up_to(5)) {
            case 0: {
                const std::string bytes(up_to(step % 7 == 0 ? 60000 : 300), static_cast<char>('a' + step % 26));
                stream->Append(bytes.data(), bytes.size());
                expected += bytes;
                break;
            }
            case 1: {
                const std::string bytes(up_to(300), static_cast<char>('A' + step % 26));
                const auto from = memory(bytes);
                from->Seek(bytes.size() / 3, 0);
                stream->Append(*from);
                expected += bytes.substr(bytes.size() / 3);
                break;
            }
            case 2: {
                const uint64_t count = up_to(200);
                stream->Extend(count);
                ASSERT_EQ(stream->GetCursor(), expected.size());
                ASSERT_EQ(stream->GetLimit(), count);
                for (uint64_t i = 0; i < count; ++i) ASSERT_EQ(stream->GetInput(0)[i], 0);
                std::memset(stream->GetOutput(0), 'e', count);
                expected.append(count, 'e');
                break;
            }
            case 3:
                if (step % 5 == 0) {
                    const uint64_t size = up_to(expected.size());
                    stream->Resize(size);
                    expected.resize(size);
                }
                break;
            case 4: {
                const uint64_t position = up_to(expected.size());
                const uint64_t count = up_to(expected.size() - position);
                const uint64_t limit = stream->Seek(position, count);
                ASSERT_GE(limit, count);
                ASSERT_EQ(stream->GetCursor(), position);
                ASSERT_EQ(limit, stream->GetLimit());
                ASSERT_EQ(std::string(stream->GetInput(0), limit), expected.substr(position, limit));
                std::memset(stream->GetOutput(0), 'w', count);
                expected.replace(position, count, count, 'w');
                break;
            }
            default:
                if (step % 11 == 0) stream->Purge();
        }
        ASSERT_EQ(stream->GetSize(), expected.size());
    }
    EXPECT_EQ(contents(*stream), expected);
}

TEST_P(WritableStreamTest, SeeksToTheEndAndNotBeyond) {
    const auto stream = Make();
    EXPECT_EQ(stream->Seek(0, 0), 0u);
    EXPECT_NE(stream->GetInput(0), nullptr);
    stream->Append("abc", 3);
    EXPECT_EQ(stream->Seek(3, 0), 0u);
    EXPECT_EQ(stream->Seek(3, 100), 0u);
    const int seek = GetParam() == 1 ? status::FileDataStream_Seek : status::MemoryDataStream_Seek;
    EXPECT_EQ(status_of([&] { stream->Seek(4, 0); }), seek);
    stream->Seek(1, 2);
    EXPECT_NE(status_of([&] { stream->GetInput(3); }), 0);
    EXPECT_NE(status_of([&] { stream->GetOutput(3); }), 0);
}

TEST_F(StreamTest, IdentityIsTheForksToo) {
    const auto stream = NewStream("abc");
    EXPECT_NE(stream->GetGuid(), NewStream()->GetGuid());
    EXPECT_NE(stream->GetGuid(), DataStream::Guid::Null());
    EXPECT_EQ(stream->GetDsid(), std::to_string(stream->GetGuid().value));
    stream->SetOwned();
    const auto fork = stream->Fork(true);
    EXPECT_EQ(fork->GetGuid(), stream->GetGuid());
    EXPECT_TRUE(fork->IsOwned());
    EXPECT_STREQ(fork->GetDerivedTypeName(), "FileDataStream");
}

TEST_F(StreamTest, SettingsOfTheProcess) {
    const unsigned before = DataStream::GetWorkBufferSize();
    EXPECT_EQ(before, 64u);
    DataStream::SetWorkBufferSize(0);
    EXPECT_EQ(DataStream::GetWorkBufferSize(), 1u);
    EXPECT_EQ(MakeRef<MemoryDataStream>()->GetPageLimit(), 1u << 20);
    DataStream::SetWorkBufferSize(before);
    EXPECT_GE(DataStream::GetMaxConcurrency(), 2u);
    EXPECT_LE(DataStream::GetMaxPageLimit(), 0x80000000u);
    DataStream::s_executing = 4;
    EXPECT_LT(DataStream::GetMaxMemoryLimit(), MappedFile::Physical() / 3);
    DataStream::s_executing = 0;
}

TEST_F(StreamTest, CopiesBetweenStreams) {
    const auto to = memory("0123456789");
    DataStream::OverlayData(*to, *memory("abc"), 4);
    EXPECT_EQ(contents(*to), "0123abc789");
    DataStream::OverlayData(*to, *memory("ABCDE"), 8);
    EXPECT_EQ(contents(*to), "0123abc7ABCDE");
    DataStream::AppendData(*to, *memory("!"));
    EXPECT_EQ(contents(*to), "0123abc7ABCDE!");
    const auto file = NewStream("a longer text than the other");
    DataStream::CopyData(*file, *to);
    EXPECT_EQ(contents(*file), "0123abc7ABCDE!");
    DataStream::CopyData(*to, *memory(""));
    EXPECT_EQ(to->GetSize(), 0u);
}

TEST_F(StreamTest, MemoryIsFrozenByAFork) {
    const auto stream = memory("abc");
    EXPECT_EQ(status_of([&] { stream->Fork(false); }), status::MemoryDataStream_Fork);
    const auto fork = stream->Fork(true);
    EXPECT_EQ(contents(*fork), "abc");
    for (const auto& side : {stream, fork}) {
        EXPECT_FALSE(side->CanExtend());
        EXPECT_EQ(status_of([&] { side->Extend(1); }), status::MemoryDataStream_Extend);
        EXPECT_EQ(status_of([&] { side->Resize(1); }), status::MemoryDataStream_Resize);
        EXPECT_EQ(status_of([&] { side->GetOutput(0); }), status::MemoryDataStream_GetOutputForked);
        EXPECT_EQ(status_of([&] { side->Append("x", 1); }), status::MemoryDataStream_AppendBuffer);
        EXPECT_EQ(status_of([&] { side->Append(*memory("x")); }), status::MemoryDataStream_AppendStream);
        side->Extend(0);
        side->Resize(3);
    }
}

TEST_F(StreamTest, FileGrowsInStepsAndIsCutAtTheEnd) {
    const auto stream = NewStream();
    stream->Append("abc", 3);
    EXPECT_EQ(LengthOnDisk(*stream), 65536u);
    EXPECT_EQ(stream->GetStorageSize(), 65536u);
    stream->Resize(200000);
    EXPECT_EQ(LengthOnDisk(*stream), 4 * 65536u);
    stream->Resize(70000);
    EXPECT_EQ(LengthOnDisk(*stream), 2 * 65536u);
    stream->Resize(5);
    const std::wstring path = stream->GetFile()->GetPath();
    EXPECT_EQ(contents(*stream), std::string("abc\0\0", 5));
    // Two open streams of one file: the second sees the contents and no room.
    EXPECT_EQ(stream->GetFile()->GetSize(), 5u);
}

TEST_F(StreamTest, ClosedFilesHaveTheSizeOfTheirContents) {
    auto stream = NewStream();
    const std::wstring path = stream->GetFile()->GetPath();
    stream->Append("abc", 3);
    stream.reset();
    DataFile file(path, false);
    EXPECT_EQ(file.GetSize(), 3u);
}

TEST_F(StreamTest, FilePartsAndForksHaveWindowsOfTheirOwn) {
    std::string bytes(5 * MappedFile::Alignment() + 100, 0);
    for (size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<char>(i * 7 + i / 256);
    const auto file = NewFile(bytes, false);
    // A part that begins and ends within pages, as those of a package.
    const uint64_t begin = 1234, size = bytes.size() - 2 * begin;
    const auto stream = FileDataStream::OpenStream(file, begin, size);
    EXPECT_EQ(stream->GetSize(), size);
    stream->SetPageLimit(1);
    stream->Purge();
    EXPECT_EQ(stream->GetLimit(), 0u);
    EXPECT_EQ(contents(*stream), bytes.substr(begin, size));
    EXPECT_EQ(stream->GetPageLimit(), MappedFile::Alignment());
    const auto fork = stream->Fork(true);
    stream->Seek(10, 1);
    fork->Seek(2 * MappedFile::Alignment(), 1);
    EXPECT_EQ(*stream->GetInput(0), bytes[begin + 10]);
    EXPECT_EQ(*fork->GetInput(0), bytes[begin + 2 * MappedFile::Alignment()]);
    EXPECT_FALSE(stream->CanExtend());
    EXPECT_EQ(status_of([&] { stream->GetOutput(0); }), status::FileDataStream_GetOutputReadOnly);
    stream->Seek(0, size);
    EXPECT_EQ(stream->Load(0, 100), 0u);
    uint64_t sum = 0;
    for (uint64_t at = 0; at < size; at += MappedFile::Alignment())
        sum += static_cast<unsigned char>(bytes[begin + at]);
    EXPECT_EQ(stream->Load(0, size), sum);
}

TEST_F(StreamTest, ForksSeeTheGrowthOfAFile) {
    const auto stream = NewStream("abc");
    const auto fork = stream->Fork(false);
    stream->Append("def", 3);
    EXPECT_EQ(contents(*fork), "abcdef");
    // Shrinking through one must not leave the other a window that faults.
    stream->Resize(1 << 20);
    fork->Seek(1 << 19, 4);
    stream->Resize(2);
    EXPECT_EQ(fork->GetLimit(), 0u);
    EXPECT_EQ(contents(*fork), "ab");
}

TEST_F(StreamTest, AFileThatIsShorterThanItsRecordSaysFailsAtTheOpening) {
    const auto file = NewFile("abc");
    try {
        FileDataStream::OpenStream(file, 0, 4);
        FAIL();
    } catch (const QVE_RuntimeError& fault) {
        EXPECT_EQ(fault.GetStatus(), status::MappedFile_Size);
        EXPECT_THAT(fault.GetText(), testing::AllOf(HasSubstr("\n - Path: "), HasSubstr(" Limit: 4 PageLimit: ")));
    }
    EXPECT_NE(status_of([&] { FileDataStream::OpenStream(file, 2, ~uint64_t{0}); }), 0);
    // Also when it was cut behind a window that is mapped already.
    const auto stream = NewStream(std::string(4 * MappedFile::Alignment(), 'x'));
    stream->SetPageLimit(1);
    stream->Purge();
    stream->Seek(0, 1);
    ASSERT_EQ(::ftruncate(stream->GetFile()->GetDescriptor(), static_cast<off_t>(MappedFile::Alignment())), 0);
    EXPECT_EQ(status_of([&] { stream->Seek(2 * MappedFile::Alignment(), 1); }), status::MappedFile_Size);
}

// Address space is what runs out here; the window then shrinks by one page after the other until it fits.
TEST_F(StreamTest, AWindowThatCannotBeMappedShrinksPageByPage) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "sanitizers need the address space themselves";
#endif
    const uint64_t page = MappedFile::Alignment();
    const uint64_t total = uint64_t{1} << 30;
    const auto file = NewFile();
    file->Resize(total);
    const auto stream = MakeRef<FileDataStream>(file, 0, total, true);
    stream->Purge();
    stream->SetPageLimit(total);
    rlimit before;
    ASSERT_EQ(::getrlimit(RLIMIT_AS, &before), 0);
    rlimit small = before;
    // As much as the process has, and somewhat less than the window.
    std::ifstream statm("/proc/self/statm");
    uint64_t pages = 0;
    statm >> pages;
    small.rlim_cur = pages * page + total - 3 * page;
    ASSERT_EQ(::setrlimit(RLIMIT_AS, &small), 0);
    const uint64_t limit = stream->Seek(0, 1);
    const uint64_t shrunk = stream->GetPageLimit();
    ::setrlimit(RLIMIT_AS, &before);
    EXPECT_EQ(limit, shrunk);
    EXPECT_LT(shrunk, total);
    EXPECT_GT(shrunk, total - 4096 * page);
}

TEST_F(StreamTest, EntireFilesAreMappedWhenTheSettingSaysSo) {
    MappedFile::s_MemoryMapEntireFile = true;
    const auto stream = NewStream(std::string(4 * MappedFile::Alignment(), 'x'));
    MappedFile::s_MemoryMapEntireFile = false;
    EXPECT_TRUE(stream->GetFile()->MapsEntireFile());
    stream->Seek(MappedFile::Alignment() + 1, 1);
    EXPECT_EQ(*stream->GetInput(0), 'x');
    stream->Append("y", 1);
    EXPECT_EQ(contents(*stream), std::string(4 * MappedFile::Alignment(), 'x') + "y");
}

TEST_F(StreamTest, ConstantStreamsReadTheSameEverywhere) {
    const auto stream = MakeRef<ConstantDataStream>(memory("abc"));
    EXPECT_EQ(stream->Seek(uint64_t{1} << 60, 8), 3u);
    EXPECT_EQ(std::string(stream->GetInput(0), 3), "abc");
    EXPECT_FALSE(stream->CanExtend());
    stream->Extend(0);
    EXPECT_EQ(status_of([&] { stream->Extend(1); }), status::ConstantDataStream_Extend);
    EXPECT_EQ(status_of([&] { stream->Resize(0); }), status::ConstantDataStream_Resize);
    EXPECT_EQ(status_of([&] { stream->Append("x", 1); }), status::ConstantDataStream_AppendBuffer);
    EXPECT_EQ(status_of([&] { stream->Append(*memory("x")); }), status::ConstantDataStream_AppendStream);
    const auto fork = stream->Fork(true);
    fork->Seek(999, 1);
    EXPECT_EQ(*fork->GetInput(0), 'a');
}

TEST_F(StreamTest, ReadOnlyStreamsRefuseEveryChange) {
    const auto stream = MakeRef<ReadOnlyDataStream>(NewStream("abc"));
    for (const auto& side : {RefCntPtr<DataStream>(stream), stream->Fork(false)}) {
        EXPECT_FALSE(side->CanExtend());
        EXPECT_EQ(status_of([&] { side->Extend(1); }), status::ReadOnlyDataStream_Extend);
        EXPECT_EQ(status_of([&] { side->Resize(1); }), status::ReadOnlyDataStream_Resize);
        EXPECT_EQ(status_of([&] { side->GetOutput(0); }), status::ReadOnlyDataStream_GetOutput);
        EXPECT_THROW(side->Append("x", 1), std::invalid_argument);
        EXPECT_THROW(side->Append(*memory("x")), std::invalid_argument);
        side->Append("", 0);
        EXPECT_EQ(contents(*side), "abc");
    }
}

TEST_F(StreamTest, TemporaryMovesToAFileOnceItIsAboveThePageLimit) {
    const auto stream = MakeRef<TempFileDataStream>();
    stream->SetPageLimit(10);
    stream->Append("0123456789", 10);
    stream->Seek(3, 2);
    EXPECT_FALSE(stream->IsInFile());
    EXPECT_TRUE(stream->IsResident());
    const std::string dsid = stream->GetDsid();
    stream->Append("!", 1);
    EXPECT_TRUE(stream->IsInFile());
    EXPECT_FALSE(stream->IsResident());
    EXPECT_EQ(stream->GetCursor(), 3u);
    EXPECT_TRUE(stream->GetDsid().ends_with(":" + dsid)) << stream->GetDsid();
    const std::wstring path = stream->GetPath();
    EXPECT_TRUE(Path::isfile(path));
    EXPECT_EQ(contents(*stream), "0123456789!");
}

TEST_F(StreamTest, TemporaryGoesWithItsLastReferenceUnlessItWasRenamed) {
    auto stream = MakeRef<TempFileDataStream>();
    EXPECT_FALSE(stream->Rename(Path::join(m_directory, L"kept")));
    stream->Append("abc", 3);
    EXPECT_EQ(stream->Purge(), 3u);
    const std::wstring path = stream->GetPath();
    auto fork = stream->Fork(true);
    stream.reset();
    EXPECT_TRUE(Path::isfile(path));
    EXPECT_EQ(contents(*fork), "abc");
    fork.reset();
    EXPECT_FALSE(Path::exists(path));

    stream = MakeRef<TempFileDataStream>();
    stream->Append("abc", 3);
    stream->SwitchToFile();
    EXPECT_TRUE(stream->Rename(Path::join(m_directory, L"kept")));
    EXPECT_TRUE(stream->GetPath().empty());
    stream.reset();
    EXPECT_EQ(DataFile(Path::join(m_directory, L"kept"), false).GetSize(), 3u);
}

TEST_F(StreamTest, BothSidesOfATemporaryForkSeeTheSameBytes) {
    const auto stream = MakeRef<TempFileDataStream>();
    stream->Append("abc", 3);
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&] {
            const auto fork = stream->Fork(true);
            EXPECT_EQ(contents(*fork), "abc");
        });
    }
    for (auto& thread : threads) thread.join();
    const auto fork = stream->Fork(false);
    stream->Append("def", 3);
    EXPECT_EQ(contents(*fork), "abcdef");
}

TEST_F(StreamTest, AnAcceleratorStaysWithTheStreamThatMovesToAFile) {
    class Index : public StreamAccelerator {
    public:
        explicit Index(int& alive) : m_alive(alive) { ++m_alive; }
        ~Index() override { --m_alive; }

    private:
        int& m_alive;
    };
    int alive = 0;
    RefCntPtr<DataStream> stream = MakeRef<TempFileDataStream>();
    stream->SetAccelerator(MakeRef<Index>(alive));
    const StreamAccelerator* const index = stream->GetAccelerator();
    stream->Purge();
    EXPECT_EQ(stream->GetAccelerator(), index);
    RefCntPtr<DataStream> fork = stream->Fork(true);
    EXPECT_EQ(fork->GetAccelerator(), index);
    // One that is made for a fork serves all, and the one in use lives on.
    const RefCntPtr<DataStream> third = stream->Fork(true);
    fork->SetAccelerator(MakeRef<Index>(alive));
    EXPECT_EQ(third->GetAccelerator(), fork->GetAccelerator());
    EXPECT_EQ(stream->GetAccelerator(), index);
    EXPECT_EQ(alive, 2);
    stream.reset();
    EXPECT_EQ(alive, 1);
}

// A temporary that finds no room keeps what it has: the statement fails, and nothing else.
TEST_F(StreamTest, ATemporaryThatFindsNoRoomStaysInMemory) {
    const auto stream = MakeRef<TempFileDataStream>();
    stream->SetPageLimit(4);
    stream->Append("abcd", 4);
    stream->Seek(2, 1);
    OS::tempdir(Path::join(m_directory, L"none"));
    EXPECT_THROW(stream->Append("e", 1), QVE_RuntimeError);
    OS::tempdir(L"");
    EXPECT_EQ(stream->GetCursor(), 2u);
    EXPECT_EQ(contents(*stream), "abcd");
    stream->Append("e", 1);
    EXPECT_EQ(contents(*stream), "abcde");
}

TEST_F(StreamTest, ATemporaryOfACancelledOperatorStaysInMemory) {
    class Cancelled final : public ProgressCallback {
    public:
        void SetProgress(uint64_t, uint64_t, uint64_t, uint64_t) override {}
        void GetProgress(uint64_t&, uint64_t&, uint64_t&, uint64_t&) const override {}
        void SetCancelled() override {}
        bool IsCancelled() const override { return true; }
    };
    const Cancelled cancelled;
    TempFileDataStream stream;
    stream.SetPageLimit(4096);
    stream.Append(std::string(4096, 'a').data(), 4096);
    {
        const CancelScope scope(&cancelled);
        EXPECT_THROW(stream.Append("b", 1), Operator::CancelledException);
        const CancelScope other(nullptr);
        CancelScope::Check();
    }
    EXPECT_EQ(contents(stream), std::string(4096, 'a'));
    stream.Append("b", 1);
    EXPECT_EQ(contents(stream), std::string(4096, 'a') + "b");
}

TEST_F(StreamTest, ResidentKeepsItsWindowWithoutAskingAgain) {
    class Counting : public DelegatedDataStream {
    public:
        using DelegatedDataStream::DelegatedDataStream;
        uint64_t Seek(uint64_t position, uint64_t minimum) override {
            ++seeks;
            return DelegatedDataStream::Seek(position, minimum);
        }
        int seeks = 0;
    };
    const auto counting = MakeRef<Counting>(memory("0123456789"));
    const auto stream = MakeRef<ResidentDataStream>(counting);
    for (uint64_t position : {7, 0, 10, 3}) {
        EXPECT_EQ(stream->Seek(position, 1), 10 - position);
        EXPECT_EQ(std::string(stream->GetInput(0), 10 - position), std::string("0123456789").substr(position));
    }
    EXPECT_EQ(counting->seeks, 0);
    EXPECT_EQ(status_of([&] { stream->GetInput(8); }), status::ResidentDataStream_GetInput);
    *stream->GetOutput(1) = 'x';
    EXPECT_EQ(contents(*stream), "0123x56789");
}

}  // namespace
}  // namespace qve
