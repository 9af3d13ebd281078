#include "storage/EncodingFactory.h"

#include <algorithm>
#include <bit>
#include <optional>

#include "metrics/Scope.h"
#include "storage/AffineDataStream.h"
#include "storage/Column.h"
#include "storage/DeltaDataStream.h"
#include "storage/DictionaryDataStream.h"
#include "storage/FORDataStream.h"
#include "storage/IntegerEncodingFactory.h"
#include "storage/OverflowDataStream.h"
#include "storage/RunLengthDataStream.h"
#include "storage/integer_width.h"
#include "storage/status.h"
#include "storage/stream/TempFileDataStream.h"
#include "system/Operator.h"
#include "system/QuillonException.h"
#include "telemetry/LogEntry.h"
#include "types/usrtype.h"

namespace qve {

namespace {

// Rows that make a sample.
constexpr uint64_t sampleRows = 65536;
constexpr unsigned minimalBlock = 32;
constexpr unsigned maximalBlock = 1 << 20;

std::optional<CellMeaning> MeaningOf(const Column& column) {
    if (column.IsCompressed()) return CellMeaning::token;
    switch (column.GetDataType()) {
        case DataType::integer:
            return CellMeaning::integer;
        case DataType::date:
        case DataType::datetime:
        case DataType::duration:
            return CellMeaning::moment;
        case DataType::real:
            return CellMeaning::real;
        default:
            return std::nullopt;
    }
}

int64_t NullCell(const Column& column, CellMeaning meaning, unsigned width) {
    if (meaning == CellMeaning::token) return -1;
    const std::string_view null = column.GetType()->null_bytes();
    return load_integer(null.data(), width);
}

}  // namespace

std::unique_ptr<EncodingFactory> EncodingFactory::CreateFactory(uint64_t mask, const Column& column, unsigned block) {
    if (column.GetDataType() == DataType::integer && !column.IsCompressed())
        return CreateStorageFactory(mask, column, block);
    return std::make_unique<EncodingFactory>(mask, block);
}

std::unique_ptr<EncodingFactory> EncodingFactory::CreateStorageFactory(uint64_t mask, const Column& column,
                                                                       unsigned block) {
    const unsigned width = column.GetTokenSize();
    const auto meaning = MeaningOf(column);
    if (!meaning || !is_integer_width(width)) return std::make_unique<EncodingFactory>(mask, block);
    // Only repetition can be seen in the bits of a real number.
    if (*meaning == CellMeaning::real) mask &= Mask::RunLength | Mask::Dictionary | Mask::Affine;
    return with_width(width, [&](auto zero) -> std::unique_ptr<EncodingFactory> {
        using T = decltype(zero);
        return std::make_unique<IntegerEncodingFactory<T>>(mask, block, *meaning,
                                                           static_cast<T>(NullCell(column, *meaning, width)));
    });
}

EncodingFactory::EncodingFactory(uint64_t mask, unsigned block)
    : m_mask(mask), m_block(std::bit_ceil(std::clamp(block, minimalBlock, maximalBlock))) {}

EncodingFactory::~EncodingFactory() = default;

void EncodingFactory::UpdateBuffer(uint64_t, const void*) {}

RefCntPtr<DataStream> EncodingFactory::ChooseEncoding() const {
    return nullptr;
}

void EncodingFactory::ExtractMetadata(const RefCntPtr<Column>&) {}

bool EncodingFactory::MinimiseIntegerType(const RefCntPtr<Column>&) const {
    return false;
}

bool EncodingFactory::MinimiseTokenWidth(const RefCntPtr<Column>&) const {
    return false;
}

RefCntPtr<DataStream> EncodingFactory::AppendStream(RefCntPtr<DataStream> stream, const void* data, uint64_t bytes) {
    const uint64_t before = GetRowCount();
    UpdateBuffer(bytes, data);
    const uint64_t size = stream->GetSize();
    RefCntPtr<DataStream> target;
    const bool sampled = before < sampleRows && GetRowCount() >= sampleRows;
    if (sampled) target = ChooseEncoding();
    if (!target) {
        try {
            stream->Append(data, bytes);
            return stream;
        } catch (const QVE_OverflowError&) {
            target = ChooseEncoding();
        }
    }
    target = Reencode(*stream, size, std::move(target));
    target->Append(data, bytes);
    // Only what comes now is watched: the choice itself says that the rows so far pay.
    if (auto runs = DynamicPtrCast<RunLengthDataStream>(target))
        target = MakeRef<OverflowDataStream>(std::move(runs), s_rleRatio);
    return target;
}

void EncodingFactory::CheckCancelled() const {
    if (m_progress && m_progress->IsCancelled()) throw Operator::CancelledException();
}

RefCntPtr<DataStream> EncodingFactory::Reencode(DataStream& from, uint64_t size, RefCntPtr<DataStream> target) const {
    constexpr uint64_t atOnce = 1 << 18;
    Metrics::Scope scope("EncodingFactory::Reencode", Metrics::Bits::Storage);
    if (!target) target = MakeRef<TempFileDataStream>();
    LogEntry() << "EncodingFactory: Re-encoding";
    for (uint64_t position = 0; position < size;) {
        CheckCancelled();
        const uint64_t wanted = std::min(size - position, atOnce);
        const uint64_t count = std::min(from.Seek(position, wanted), wanted);
        target->Append(from.GetInput(0), count);
        position += count;
    }
    return target;
}

RefCntPtr<DataStream> EncodingFactory::FinaliseStream(RefCntPtr<DataStream> stream) {
    if (const auto watch = DynamicPtrCast<OverflowDataStream>(stream)) stream = watch->GetWatched();
    const RefCntPtr<DataStream> choice = ChooseEncoding();
    const EncodedDataStream* present = GetEncodingStream(stream.get());
    const EncodedDataStream* best = GetEncodingStream(choice.get());
    const bool keep = present && best ? present->HasSameLayout(*best) : !present && !best;
    if (!keep) stream = Reencode(*stream, stream->GetSize(), choice);
    UpdateStream(*stream);
    return stream;
}

void EncodingFactory::UpdateStream(DataStream& stream) {
    if (EncodedDataStream* encoded = GetEncodingStream(&stream)) encoded->Flush();
}

EncodedDataStream* EncodingFactory::GetEncodingStream(DataStream* stream) {
    while (stream) {
        if (auto* encoded = dynamic_cast<EncodedDataStream*>(stream)) return encoded;
        auto* delegated = dynamic_cast<DelegatedDataStream*>(stream);
        stream = delegated ? delegated->GetDelegate().get() : nullptr;
    }
    return nullptr;
}

std::wstring_view EncodingFactory::GetEncodingType(DataStream* stream) {
    const EncodedDataStream* encoded = GetEncodingStream(stream);
    return encoded ? encoded->GetEncodingName() : L"none";
}

RefCntPtr<DataStream> EncodingFactory::GetStorageStream(RefCntPtr<DataStream> stream) {
    while (const auto* delegated = dynamic_cast<const DelegatedDataStream*>(stream.get())) {
        RefCntPtr<DataStream> delegate = delegated->GetDelegate();
        stream = std::move(delegate);
    }
    return stream;
}

RefCntPtr<DataStream> EncodingFactory::CreateEncodingStream(RefCntPtr<DataStream> stream, std::wstring_view name) {
    if (name == L"none") return stream;
    if (name == L"for") return MakeRef<FORDataStream>(std::move(stream));
    if (name == L"delta") return MakeRef<DeltaDataStream>(std::move(stream));
    if (name == L"dict") return MakeRef<DictionaryDataStream>(std::move(stream));
    if (name == L"affine") return MakeRef<AffineDataStream>(std::move(stream));
    if (name == L"rle") return MakeRef<RunLengthDataStream>(std::move(stream));
    throw QVE_InvalidArgument(status::EncodingFactory_CreateEncodingStream,
                              "EncodingFactory::CreateEncodingStream: Unknown encoding");
}

}  // namespace qve
