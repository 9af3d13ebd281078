#include "ingest/DecompressingDataStream.h"

#include <gtest/gtest.h>
#include <zlib.h>
#include <zstd.h>

#include <random>
#include <string>

#include "ingest/status.h"
#include "storage/stream/MemoryDataStream.h"
#include "system/QuillonException.h"

namespace qve {
namespace {

std::string Gzip(const std::string& text) {
    z_stream state = {};
    deflateInit2(&state, 6, Z_DEFLATED, MAX_WBITS + 16, 8, Z_DEFAULT_STRATEGY);
    std::string packed(deflateBound(&state, text.size()), '\0');
    state.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(text.data()));
    state.avail_in = static_cast<uInt>(text.size());
    state.next_out = reinterpret_cast<Bytef*>(packed.data());
    state.avail_out = static_cast<uInt>(packed.size());
    EXPECT_EQ(deflate(&state, Z_FINISH), Z_STREAM_END);
    packed.resize(state.total_out);
    deflateEnd(&state);
    return packed;
}

std::string Zstd(const std::string& text) {
    std::string packed(ZSTD_compressBound(text.size()), '\0');
    packed.resize(ZSTD_compress(packed.data(), packed.size(), text.data(), text.size(), 3));
    return packed;
}

RefCntPtr<DataStream> Open(const std::string& bytes) {
    return DecompressingDataStream::CreatePlainStream(MakeRef<MemoryDataStream>(bytes.data(), bytes.size()));
}

std::string ReadAll(DataStream& stream, uint64_t step) {
    std::string text;
    while (const uint64_t limit = std::min(stream.Seek(text.size(), step), step)) {
        text.append(stream.GetInput(0), limit);
    }
    return text;
}

/// The number of what reading these bytes raises; 0 when they are read.
int StatusOf(const std::string& bytes) {
    try {
        ReadAll(*Open(bytes), 1 << 16);
    } catch (const QuillonException& fault) {
        EXPECT_NE(fault.GetText(), "");
        return fault.GetStatus();
    }
    return 0;
}

/// A text that compresses somewhat, longer than the blocks of either side.
std::string SomeText() {
    std::mt19937 random(7);
    std::string text;
    while (text.size() < 1'500'000) text += std::to_string(random() % 1'000'000) + (random() % 7 ? "," : "\n");
    return text;
}

TEST(DecompressingDataStream, ReadsMembersBehindEachOther) {
    const std::string text = SomeText();
    for (const auto pack : {Gzip, Zstd}) {
        const RefCntPtr<DataStream> stream = Open(pack(text) + pack("") + pack("end"));
        EXPECT_TRUE(ReadAll(*stream, 10'000) == text + "end");
        EXPECT_TRUE(ReadAll(*stream, 1 << 20) == text + "end") << "from the start again";
        EXPECT_TRUE(ReadAll(*stream->Fork(true), 1 << 17) == text + "end");
        EXPECT_EQ(ReadAll(*Open(pack("")), 10), "");
    }
    EXPECT_EQ(ReadAll(*Open(Gzip("a,b\n") + std::string(512, '\0')), 3), "a,b\n") << "padded by a tape";
}

TEST(DecompressingDataStream, LeavesOtherBytesAlone) {
    for (const std::string bytes : {"", "\x1F", "\x1F\x8B", "a,b\n1,2\n"}) EXPECT_EQ(ReadAll(*Open(bytes), 100), bytes);
}

TEST(DecompressingDataStream, RefusesWhatIsCutOrDamaged) {
    const std::string text = SomeText().substr(0, 3000);
    for (const auto pack : {Gzip, Zstd}) {
        const std::string packed = pack(text);
        for (size_t size = 4; size < packed.size(); ++size) {
            EXPECT_EQ(StatusOf(packed.substr(0, size)), status::DecompressingDataStream_Truncated) << size;
        }
        for (size_t at = 0; at < packed.size(); ++at) {
            std::string damaged = packed;
            damaged[at] ^= 0x10;
            const int status = StatusOf(damaged);  // some bytes, as a time of change, mean nothing
            EXPECT_TRUE(status == 0 || status == status::DecompressingDataStream_Truncated ||
                        status == status::DecompressingDataStream_Corrupt)
                << at << " " << status;
        }
        EXPECT_EQ(StatusOf(packed + "rubbish"), status::DecompressingDataStream_Corrupt);
    }
    std::string wrongSum = Gzip(text);
    wrongSum[wrongSum.size() - 8] ^= 1;
    EXPECT_EQ(StatusOf(wrongSum), status::DecompressingDataStream_Corrupt);
}

}  // namespace
}  // namespace qve
