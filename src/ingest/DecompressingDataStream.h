#pragma once

#include <memory>
#include <string_view>

#include "ingest/TextDataStream.h"

namespace qve {

/// The text of a compressed file, in the formats of gzip and zstd, decompressed block by block as it is read. Several
/// members or frames behind each other are one text. Whatever a file announces, it takes no more memory than its format
/// needs for looking back, 128 MiB at most.
class DecompressingDataStream : public TextDataStream {
public:
    /// `stream` itself when its first bytes are of no known format of compression.
    static RefCntPtr<DataStream> CreatePlainStream(const RefCntPtr<DataStream>& stream);

    /// A decompressor of one format.
    class Decoder {
    public:
        virtual ~Decoder() = default;
        /// Takes bytes from the front of `input` and writes at most `room` bytes of text; gives how many. Throws
        /// QVE_RuntimeError (status::DecompressingDataStream_Corrupt) for bytes that are not of the format.
        virtual std::size_t Decode(std::string_view& input, char* text, std::size_t room) = 0;
        /// Whether the text may end here: all that was begun is finished.
        virtual bool IsComplete() const = 0;
        /// Begins a new text.
        virtual void Reset() = 0;
    };
    DecompressingDataStream(RefCntPtr<DataStream> source, std::unique_ptr<Decoder> decoder);

    /// An upper bound: only at the end is it known how long the text is.
    uint64_t GetSize() const override;
    RefCntPtr<DataStream> Fork(bool readOnly) override;

private:
    /// Throws QVE_RuntimeError: status::DecompressingDataStream_Truncated when the file ends too early, and as Decode.
    bool ReadNextBlock(std::vector<char>& buffer, uint64_t count) override;
    void Rewind() override;

    const RefCntPtr<DataStream> m_source;
    const std::unique_ptr<Decoder> m_decoder;
    uint64_t m_position = 0;   // in the source, behind the input
    std::string_view m_input;  // of the source, not decompressed yet
};

}  // namespace qve
