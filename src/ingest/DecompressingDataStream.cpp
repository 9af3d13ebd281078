#include "ingest/DecompressingDataStream.h"

#include <zlib.h>
#include <zstd.h>

#include <algorithm>
#include <limits>
#include <new>
#include <string>
#include <utility>

#include "ingest/status.h"
#include "system/QuillonException.h"

namespace qve {
namespace {

using namespace std::string_view_literals;

constexpr uint64_t input_block = 1 << 18;

constexpr std::string_view gzip_magic = "\x1F\x8B\x08"sv;
constexpr std::string_view zstd_magic = "\x28\xB5\x2F\xFD"sv;

[[noreturn]] void RaiseCorrupt(const std::string& what) {
    throw QVE_RuntimeError(status::DecompressingDataStream_Corrupt,
                           "DecompressingDataStream: the compressed text is damaged: " + what);
}

class GzipDecoder : public DecompressingDataStream::Decoder {
public:
    GzipDecoder() {
        constexpr int gzip_format = 16;
        if (inflateInit2(&m_state, MAX_WBITS + gzip_format) != Z_OK) throw std::bad_alloc();
    }
    ~GzipDecoder() override { inflateEnd(&m_state); }
    GzipDecoder(const GzipDecoder&) = delete;
    GzipDecoder& operator=(const GzipDecoder&) = delete;

    std::size_t Decode(std::string_view& input, char* text, std::size_t room) override {
        if (m_complete) {
            // Tapes and disks fill up with zeros behind the last member.
            while (!input.empty() && input.front() == '\0') input.remove_prefix(1);
            if (input.empty()) return 0;
            inflateReset(&m_state);
            m_complete = false;
        }
        constexpr std::size_t most = std::numeric_limits<uInt>::max();
        m_state.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(input.data()));
        m_state.avail_in = static_cast<uInt>(std::min(input.size(), most));
        m_state.next_out = reinterpret_cast<Bytef*>(text);
        m_state.avail_out = static_cast<uInt>(std::min(room, most));
        const uInt offered = m_state.avail_in;
        const uInt free = m_state.avail_out;
        const int result = inflate(&m_state, Z_NO_FLUSH);
        if (result == Z_MEM_ERROR) throw std::bad_alloc();
        if (result != Z_OK && result != Z_STREAM_END && result != Z_BUF_ERROR) {
            RaiseCorrupt(m_state.msg ? m_state.msg : "no gzip data");
        }
        m_complete = result == Z_STREAM_END;
        input.remove_prefix(offered - m_state.avail_in);
        return free - m_state.avail_out;
    }
    bool IsComplete() const override { return m_complete; }
    void Reset() override {
        inflateReset(&m_state);
        m_complete = false;
    }

private:
    z_stream m_state = {};
    bool m_complete = false;
};

class ZstdDecoder : public DecompressingDataStream::Decoder {
public:
    ZstdDecoder() : m_state(ZSTD_createDStream()) {
        if (!m_state) throw std::bad_alloc();
    }
    ~ZstdDecoder() override { ZSTD_freeDStream(m_state); }
    ZstdDecoder(const ZstdDecoder&) = delete;
    ZstdDecoder& operator=(const ZstdDecoder&) = delete;

    std::size_t Decode(std::string_view& input, char* text, std::size_t room) override {
        if (m_complete && input.empty()) return 0;
        ZSTD_inBuffer in{input.data(), input.size(), 0};
        ZSTD_outBuffer out{text, room, 0};
        const std::size_t result = ZSTD_decompressStream(m_state, &out, &in);
        if (ZSTD_isError(result)) RaiseCorrupt(ZSTD_getErrorName(result));
        m_complete = result == 0;
        input.remove_prefix(in.pos);
        return out.pos;
    }
    bool IsComplete() const override { return m_complete; }
    void Reset() override {
        ZSTD_DCtx_reset(m_state, ZSTD_reset_session_only);
        m_complete = false;
    }

private:
    ZSTD_DStream* const m_state;
    bool m_complete = false;
};

/// Null for bytes of no known format.
std::unique_ptr<DecompressingDataStream::Decoder> MakeDecoder(DataStream& stream) {
    const uint64_t limit = std::min<uint64_t>(stream.Seek(0, zstd_magic.size()), zstd_magic.size());
    const std::string_view first(limit ? stream.GetInput(0) : "", limit);
    if (first.starts_with(gzip_magic)) return std::make_unique<GzipDecoder>();
    if (first.starts_with(zstd_magic)) return std::make_unique<ZstdDecoder>();
    return nullptr;
}

}  // namespace

RefCntPtr<DataStream> DecompressingDataStream::CreatePlainStream(const RefCntPtr<DataStream>& stream) {
    auto decoder = MakeDecoder(*stream);
    if (!decoder) return stream;
    return MakeRef<DecompressingDataStream>(stream, std::move(decoder));
}

DecompressingDataStream::DecompressingDataStream(RefCntPtr<DataStream> source, std::unique_ptr<Decoder> decoder)
    : TextDataStream("DecompressingDataStream"), m_source(std::move(source)), m_decoder(std::move(decoder)) {}

uint64_t DecompressingDataStream::GetSize() const {
    return std::numeric_limits<uint64_t>::max() / 4;  // leaves room for bounds of streams over this one
}

RefCntPtr<DataStream> DecompressingDataStream::Fork(bool readOnly) {
    return CreatePlainStream(m_source->Fork(readOnly));
}

void DecompressingDataStream::Rewind() {
    m_position = 0;
    m_input = {};
    m_decoder->Reset();
}

bool DecompressingDataStream::ReadNextBlock(std::vector<char>& buffer, uint64_t count) {
    const std::size_t old = buffer.size();
    buffer.resize(old + count);
    std::size_t produced = 0;
    bool ended = false;
    while (produced == 0 && !ended) {
        if (m_input.empty()) {
            const uint64_t limit = std::min(m_source->Seek(m_position, input_block), input_block);
            m_input = {limit ? m_source->GetInput(0) : "", limit};
            m_position += limit;
            ended = limit == 0;
        }
        // At the end, too: what is decompressed may still wait for room.
        produced = m_decoder->Decode(m_input, buffer.data() + old, count);
    }
    buffer.resize(old + produced);
    if (produced == 0 && !m_decoder->IsComplete()) {
        throw QVE_RuntimeError(status::DecompressingDataStream_Truncated,
                               "DecompressingDataStream: the compressed text ends too early; is the file whole?");
    }
    return produced > 0;
}

}  // namespace qve
