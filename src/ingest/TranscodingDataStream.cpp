#include "ingest/TranscodingDataStream.h"

#include <algorithm>
#include <string_view>

#include "ingest/status.h"
#include "system/QuilICUCharsetDetector.h"
#include "system/QuilICUConverter.h"
#include "system/QuillonException.h"

namespace qve {
namespace {

[[noreturn]] void RaiseCharset(const char* text) {
    throw QVE_RuntimeError(status::TranscodingDataStream_Charset, std::string("CreateUTF8Stream: ") + text);
}

bool IsUTF8(std::string_view charset) {
    return charset == "UTF-8" || charset == "utf-8" || charset == "US-ASCII";
}

// The length of the byte order mark that a text of this character set begins with.
uint64_t MarkLength(std::string_view sample, std::string_view charset) {
    const auto begins = [sample](std::string_view mark) { return sample.substr(0, mark.size()) == mark; };
    if (IsUTF8(charset)) return begins("\xEF\xBB\xBF") ? 3 : 0;
    if (charset == "UTF-16LE") return begins("\xFF\xFE") ? 2 : 0;
    if (charset == "UTF-16BE") return begins("\xFE\xFF") ? 2 : 0;
    return 0;
}

// True when the sample is well-formed UTF-8 but for a character that its end cuts.
bool IsWellFormed(std::string_view text) {
    const auto byte = [text](size_t i) { return static_cast<unsigned char>(text[i]); };
    for (size_t i = 0; i < text.size();) {
        const unsigned lead = byte(i);
        if (lead < 0x80) {
            ++i;
            continue;
        }
        const size_t length = lead < 0xC2 ? 0 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : lead < 0xF5 ? 4 : 0;
        if (length == 0) return false;
        for (size_t k = 1; k < length; ++k) {
            if (i + k == text.size()) return true;
            if ((byte(i + k) & 0xC0) != 0x80) return false;
        }
        i += length;
    }
    return true;
}

std::string DetectCharset(std::string_view sample) {
    const bool hasMark = !sample.empty() && static_cast<unsigned char>(sample[0]) > 253;
    if (!hasMark) {
        size_t zeros[2] = {0, 0};
        for (size_t i = 0; i < sample.size(); ++i) zeros[i & 1] += sample[i] == 0;
        if (4 * zeros[1] > sample.size()) return "UTF-16LE";
        if (4 * zeros[0] > sample.size()) return "UTF-16BE";
        // Statistics take short texts for anything; bytes that are UTF-8 throughout are hardly something else.
        if (IsWellFormed(sample)) return "UTF-8";
    }
    const auto detector = QuilICU::CharsetDetector::Open();
    if (!detector) RaiseCharset("Unable to allocate detector");
    if (!detector->SetText(sample)) RaiseCharset("Unable to set detector text");
    if (!detector->Detect()) RaiseCharset("Unable to detect character set");
    const auto name = detector->GetName();
    if (!name) RaiseCharset("Unable to get character set name");
    if (!detector->GetConfidence()) RaiseCharset("Unable to get character set confidence");
    return *name;
}

}  // namespace

std::atomic<uint64_t> TranscodingDataStream::s_CharsetSampleSize{262144};

RefCntPtr<DataStream> TranscodingDataStream::CreateUTF8Stream(const RefCntPtr<DataStream>& stream,
                                                              std::string& charset) {
    const uint64_t wanted = s_CharsetSampleSize.load(std::memory_order_relaxed);
    const uint64_t limit = std::min(stream->Seek(0, wanted), wanted);
    const std::string_view sample(limit ? stream->GetInput(0) : "", limit);
    if (charset.empty()) charset = DetectCharset(sample);
    const uint64_t mark = MarkLength(sample, charset);
    if (IsUTF8(charset) && mark == 0) return stream;
    return MakeRef<TranscodingDataStream>(stream, charset, mark);
}

TranscodingDataStream::TranscodingDataStream(RefCntPtr<DataStream> source, std::string charset, uint64_t start)
    : TextDataStream("TranscodingDataStream"),
      m_source(std::move(source)),
      m_charset(std::move(charset)),
      m_start(start),
      m_position(start) {
    if (m_charset.empty()) RaiseCharset("charset is null");
    if (IsUTF8(m_charset)) return;
    m_converter = QuilICU::Converter::Open(m_charset.c_str());
    if (!m_converter) {
        throw QVE_RuntimeError(status::TranscodingDataStream_Converter,
                               "TranscodingDataStream: Unable to open converter (" + m_charset + ")");
    }
}

TranscodingDataStream::~TranscodingDataStream() = default;

RefCntPtr<DataStream> TranscodingDataStream::Fork(bool readOnly) {
    return MakeRef<TranscodingDataStream>(m_source->Fork(readOnly), m_charset, m_start);
}

void TranscodingDataStream::Rewind() {
    m_position = m_start;
    m_flushed = false;
    if (m_converter) m_converter->Reset();
}

bool TranscodingDataStream::ReadNextBlock(std::vector<char>& buffer, uint64_t count) {
    if (m_flushed) return false;
    const uint64_t limit = std::min(m_source->Seek(m_position, count), count);
    const std::string_view block(limit ? m_source->GetInput(0) : "", limit);
    m_position += limit;
    m_flushed = limit == 0;
    if (!m_converter) {
        buffer.insert(buffer.end(), block.begin(), block.end());
        return !m_flushed;
    }
    std::string utf8;
    if (!m_converter->Append(utf8, block, m_flushed)) {
        throw QVE_RuntimeError(status::TranscodingDataStream_Converter,
                               "TranscodingDataStream: Unable to convert from " + m_charset);
    }
    buffer.insert(buffer.end(), utf8.begin(), utf8.end());
    return !m_flushed || !utf8.empty();
}

}  // namespace qve
