#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include "storage/stream/DataStream.h"
#include "system/ProgressCallback.h"

namespace qve {

class Column;
class EncodedDataStream;

/// Watches the values of a column while they are appended, chooses the encoding that takes least room, and writes them
/// through it. One factory for one column, for as long as the column is written, in one thread:
///
///     auto factory = EncodingFactory::CreateFactory(mask, *column);
///     for each page: stream = factory->AppendStream(stream, cells, bytes);   // `stream` began as a TempFileDataStream
///     stream = factory->FinaliseStream(stream);
///     column->SetData(stream);
///     factory->ExtractMetadata(column);
///
/// The column begins as plain cells, is encoded once 65536 rows give a sample, and again whenever a value escapes the
/// encoding. The base class is what columns get that are not encoded: it appends plain cells.
class EncodingFactory {
public:
    /// The bits of an encodings mask.
    struct Mask {
        static constexpr uint64_t RunLength = 1;
        static constexpr uint64_t FrameOfReference = 2;
        static constexpr uint64_t Delta = 4;
        static constexpr uint64_t Dictionary = 8;
        static constexpr uint64_t Affine = 16;
        static constexpr uint64_t All = 31;
        static constexpr uint64_t None = 0;
    };
    /// Values to a block when the caller does not say: the rows of a page.
    static constexpr unsigned DefaultBlockLength = 1024;
    /// Run lengths are used only while they take no more than this part of the plain size.
    static constexpr double s_rleRatio = 0.5;

    /// A factory that encodes when the column is a plain integer column of 1, 2, 4 or 8 bytes, else the base.
    /// @param block values to a block; rounded up to a power of two of at least 32
    static std::unique_ptr<EncodingFactory> CreateFactory(uint64_t mask, const Column& column,
                                                          unsigned block = DefaultBlockLength);
    /// A factory for a column that goes to a database, where size counts for more than the time to write it: it also
    /// encodes tokens, dates and times, and reals by their bits, which all are cells of the same widths.
    static std::unique_ptr<EncodingFactory> CreateStorageFactory(uint64_t mask, const Column& column,
                                                                 unsigned block = DefaultBlockLength);
    EncodingFactory(uint64_t mask, unsigned block);
    virtual ~EncodingFactory();
    EncodingFactory(const EncodingFactory&) = delete;
    EncodingFactory& operator=(const EncodingFactory&) = delete;

    /// Adds cells to the statistics.
    virtual void UpdateBuffer(uint64_t bytes, const void* data);
    /// A new, empty stream of the best encoding for the values seen so far; null when plain cells are best.
    virtual RefCntPtr<DataStream> ChooseEncoding() const;
    /// Puts what the statistics say into the column's properties: min-value, max-value, not-null, ordered, unique,
    /// cardinality, distinct.
    virtual void ExtractMetadata(const RefCntPtr<Column>& column);
    /// Gives a column without `compression` the narrowest of tiny, short and long that holds its values, and its stream
    /// cells of that width. False when nothing was done. Call it after FinaliseStream.
    virtual bool MinimiseIntegerType(const RefCntPtr<Column>& column) const;

    /// The same for the tokens of a dictionary that is complete: as narrow as its end allows.
    virtual bool MinimiseTokenWidth(const RefCntPtr<Column>& column) const;

    /// What ends the copying of a long column with Operator::CancelledException when it says cancelled; may be null.
    void SetProgressCallback(RefCntPtr<ProgressCallback> progress) { m_progress = std::move(progress); }

    /// Appends `bytes` of cells and returns the stream to use from now on; it holds all cells, whatever happened.
    RefCntPtr<DataStream> AppendStream(RefCntPtr<DataStream> stream, const void* data, uint64_t bytes);
    /// Called once at the end of the column: encodes anew if all values together ask for another encoding, completes
    /// the header, and returns the stream to keep.
    RefCntPtr<DataStream> FinaliseStream(RefCntPtr<DataStream> stream);
    /// Brings the header and what is buffered to the backing stream.
    static void UpdateStream(DataStream& stream);

    /// The first encoded stream on the way from `stream` to its storage; null when the cells are plain.
    static EncodedDataStream* GetEncodingStream(DataStream* stream);
    /// The name of its encoding: "for", "delta", "dict", "affine", "rle" or "none".
    static std::wstring_view GetEncodingType(DataStream* stream);
    /// The last delegate: the stream over the file. `stream` itself when it delegates to none.
    static RefCntPtr<DataStream> GetStorageStream(RefCntPtr<DataStream> stream);
    /// Reads `stream` by the encoding of this name. "none" gives the stream itself. Throws QVE_InvalidArgument 40138
    /// for an unknown name, and the numbers of the encodings for a stream that does not hold what its header says.
    static RefCntPtr<DataStream> CreateEncodingStream(RefCntPtr<DataStream> stream, std::wstring_view name);

protected:
    unsigned GetBlockLength() const { return m_block; }
    uint64_t GetMask() const { return m_mask; }
    /// Throws Operator::CancelledException when the work was cancelled.
    void CheckCancelled() const;
    /// Rows seen so far.
    virtual uint64_t GetRowCount() const { return 0; }

private:
    /// Copies the first `size` bytes of `from` behind `target`, or into a new plain stream when that is null.
    RefCntPtr<DataStream> Reencode(DataStream& from, uint64_t size, RefCntPtr<DataStream> target) const;

    uint64_t m_mask;
    unsigned m_block;
    RefCntPtr<ProgressCallback> m_progress;
};

}  // namespace qve
