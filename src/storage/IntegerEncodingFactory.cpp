#include "storage/IntegerEncodingFactory.h"

#include <bit>
#include <optional>
#include <string>
#include <vector>

#include "storage/AffineDataStream.h"
#include "storage/Column.h"
#include "storage/DeltaDataStream.h"
#include "storage/DictionaryDataStream.h"
#include "storage/FORDataStream.h"
#include "storage/RunLengthDataStream.h"
#include "storage/ToProperty.h"
#include "storage/bit_unpacking.h"
#include "storage/integer_width.h"
#include "storage/stream/TempFileDataStream.h"
#include "types/builtin.h"
#include "types/usratom.h"

namespace qve {

namespace {

constexpr uint64_t affineSize = 40;
constexpr uint64_t blockHeaderSize = 32;
constexpr uint64_t runHeaderSize = 10;
constexpr unsigned maximalDictionaryBits = 15;

// The least logarithm of the mean run for which run lengths are worth the walk from run to run; by the logarithms of
// value width and run field width.
constexpr unsigned s_logruns[4][4] = {{3, 4, 4, 5}, {3, 3, 4, 4}, {3, 3, 3, 3}, {2, 2, 2, 3}};

uint64_t round_up(uint64_t rows, uint64_t block) {
    return (rows + block - 1) / block * block;
}

// The bits that the numbers from 0 to `greatest` - `least` need; none when the distance is negative in the type.
template <class T>
std::optional<unsigned> bits_of_range(T least, T greatest) {
    using U = std::make_unsigned_t<T>;
    const T range = static_cast<T>(static_cast<U>(greatest) - static_cast<U>(least));
    if (range < 0) return std::nullopt;
    const unsigned bits = static_cast<unsigned>(std::bit_width(static_cast<U>(range)));
    if (bits < 1 || bits > maximal_packed_bits) return std::nullopt;
    return bits;
}

// The name of the narrowest type that holds all values beside its null; none when T is that already.
template <class T>
const wchar_t* narrower_type(T least, T greatest, unsigned& width) {
    static constexpr struct {
        const wchar_t* name;
        unsigned width;
        int64_t most;
    } types[] = {{L"tiny", 1, INT8_MAX}, {L"short", 2, INT16_MAX}, {L"long", 4, INT32_MAX}};
    for (const auto& type : types) {
        if (type.width < sizeof(T) && least >= -type.most && greatest <= type.most) {
            width = type.width;
            return type.name;
        }
    }
    return nullptr;
}

template <class To, class From>
void narrow_cells(const char* cells, uint64_t count, CellMeaning meaning, std::vector<char>& out) {
    constexpr From null = IntegerStatistics<From>::Lowest;
    out.resize(count * sizeof(To));
    for (uint64_t i = 0; i < count; ++i) {
        From cell;
        std::memcpy(&cell, cells + i * sizeof(From), sizeof(From));
        // All ones stay all ones when they are cut.
        const bool lost = meaning == CellMeaning::integer && cell == null;
        const To value = lost ? IntegerStatistics<To>::Lowest : static_cast<To>(cell);
        std::memcpy(out.data() + i * sizeof(To), &value, sizeof(To));
    }
}

// The same values in narrower cells, encoded as they deserve.
template <class To, class From, class Check>
RefCntPtr<DataStream> copy_narrowed(DataStream& from, uint64_t mask, unsigned block, CellMeaning meaning, Check check) {
    IntegerEncodingFactory<To> factory(mask, block);
    RefCntPtr<DataStream> target = MakeRef<TempFileDataStream>();
    std::vector<char> cells;
    for (uint64_t position = 0; position < from.GetSize();) {
        check();
        const uint64_t limit = from.Seek(position, std::min(from.GetSize() - position, uint64_t{1} << 16));
        const uint64_t bytes = std::min(limit, uint64_t{1} << 16) / sizeof(From) * sizeof(From);
        narrow_cells<To, From>(from.GetInput(0), bytes / sizeof(From), meaning, cells);
        target = factory.AppendStream(target, cells.data(), cells.size());
        position += bytes;
    }
    return factory.FinaliseStream(target);
}

}  // namespace

template <class T>
IntegerEncodingFactory<T>::IntegerEncodingFactory(uint64_t mask, unsigned block, CellMeaning meaning, T null)
    : EncodingFactory(mask, block), m_meaning(meaning), m_statistics((mask & Mask::Dictionary) != 0, null) {}

template <class T>
void IntegerEncodingFactory<T>::UpdateBuffer(uint64_t bytes, const void* data) {
    m_statistics.Update(static_cast<const char*>(data), bytes / sizeof(T));
}

template <class T>
RefCntPtr<DataStream> IntegerEncodingFactory<T>::ChooseEncoding() const {
    constexpr uint64_t width = sizeof(T);
    const IntegerStatistics<T>& s = m_statistics;
    const uint64_t rows = s.GetCount();
    const uint64_t block = GetBlockLength();
    const uint64_t packedRows = round_up(rows, block);

    enum { plain, affine, frame, delta, dictionary, runs } best = plain;
    uint64_t bestSize = width * rows;
    unsigned bits = 0;
    unsigned runWidth = 0;

    const bool line = rows > 1 && s.GetMinimumDifference() == s.GetMaximumDifference();
    if (Allows(Mask::Affine) && line && bestSize > affineSize) {
        best = affine;
        bestSize = affineSize;
    }
    if (Allows(Mask::FrameOfReference)) {
        if (const auto b = bits_of_range(s.GetMinimum(), s.GetMaximum())) {
            const uint64_t size = *b * packedRows / 8 + blockHeaderSize;
            if (size < bestSize) {
                best = frame;
                bestSize = size;
                bits = *b;
            }
        }
    }
    if (Allows(Mask::Delta) && rows > 1) {
        if (const auto b = bits_of_range(s.GetMinimumDifference(), s.GetMaximumDifference())) {
            const uint64_t size = packedRows / block * width + *b * packedRows / 8 + blockHeaderSize;
            if (size < bestSize) {
                best = delta;
                bestSize = size;
                bits = *b;
            }
        }
    }
    if (Allows(Mask::Dictionary) && s.HasDistinct()) {
        const unsigned b = static_cast<unsigned>(std::bit_width(s.GetDistinct()));
        const uint64_t size = packedRows * b / 8 + (width << b) + blockHeaderSize;
        if (b >= 1 && b <= maximalDictionaryBits && size < bestSize) {
            best = dictionary;
            bestSize = size;
            bits = b;
        }
    }
    if (Allows(Mask::RunLength)) {
        for (unsigned log = 0; log < IntegerStatistics<T>::runWidths; ++log) {
            const uint64_t count = s.GetRuns(log);
            const uint64_t size = (width + (uint64_t{1} << log)) * count + runHeaderSize;
            const bool pays = static_cast<double>(size) <= s_rleRatio * static_cast<double>(width * rows);
            const unsigned meanLog = static_cast<unsigned>(std::bit_width(rows / count));
            if (size < bestSize && pays && meanLog >= s_logruns[std::countr_zero(width)][log]) {
                best = runs;
                bestSize = size;
                runWidth = 1u << log;
            }
        }
    }

    const auto target = [] { return MakeRef<TempFileDataStream>(); };
    switch (best) {
        case affine:
            return MakeRef<AffineDataStream>(target(), width, block, s.GetFirst(), s.GetMinimumDifference());
        case frame:
            return MakeRef<FORDataStream>(target(), width, bits, block, s.GetMinimum());
        case delta:
            return MakeRef<DeltaDataStream>(target(), width, bits, block, s.GetMinimumDifference());
        case dictionary:
            return MakeRef<DictionaryDataStream>(target(), width, bits, block);
        case runs:
            return MakeRef<RunLengthDataStream>(target(), runWidth, width);
        default:
            return nullptr;
    }
}

template <class T>
void IntegerEncodingFactory<T>::ExtractMetadata(const RefCntPtr<Column>& column) {
    const IntegerStatistics<T>& s = m_statistics;
    if (s.GetCount() == 0) return;
    if (!s.HasNull()) column->SetProperty(usrpropkey::not_null, L"true");
    if (m_meaning == CellMeaning::real || m_meaning == CellMeaning::token) return;
    // Moments are unsigned: below 0 their order is another one.
    if (m_meaning == CellMeaning::moment && s.HasValue() && s.GetMinimumValue() < 0) return;
    if (s.HasValue()) {
        const usrtype* const type = column->GetType();
        const auto text = [&](T value) {
            return ToProperty(usratom(type, reinterpret_cast<char*>(&value), sizeof(T)));
        };
        column->SetProperty(usrpropkey::min_value, text(s.GetMinimumValue()));
        column->SetProperty(usrpropkey::max_value, text(s.GetMaximumValue()));
    }
    if (s.IsAscending() || s.IsDescending()) {
        column->SetProperty(usrpropkey::ordered, s.IsAscending() ? L"asc" : L"desc");
        if (s.IsStrict()) column->SetProperty(usrpropkey::unique, L"true");
    }
    if (s.HasDistinct()) {
        column->SetProperty(usrpropkey::cardinality, std::to_wstring(s.GetDistinct() - (s.HasNull() ? 1 : 0)));
        column->SetProperty(usrpropkey::distinct, L"true");
    }
}

template <class T>
RefCntPtr<DataStream> IntegerEncodingFactory<T>::Narrow(RefCntPtr<DataStream> stream, const usrtype* type,
                                                        unsigned width) const {
    EncodedDataStream* encoded = GetEncodingStream(stream.get());
    const auto atom = [&](int64_t value) {
        char bytes[8];
        store_integer(bytes, width, value);
        return usratom(type, bytes, width);
    };
    // The null of an integer would have to become another number: the packed forms know it as a number only.
    const bool inPlace = m_meaning == CellMeaning::token || !m_statistics.HasNull();
    if (auto* frame = dynamic_cast<FORDataStream*>(encoded); frame && inPlace) {
        frame->SetBase(atom(frame->GetBase()));
        return stream;
    }
    if (auto* line = dynamic_cast<AffineDataStream*>(encoded); line && inPlace) {
        line->SetBase(atom(line->GetFirst()));
        return stream;
    }
    return with_width(width, [&](auto zero) -> RefCntPtr<DataStream> {
        using To = decltype(zero);
        if constexpr (sizeof(To) < sizeof(T))
            return copy_narrowed<To, T>(*stream, GetMask(), GetBlockLength(), m_meaning, [&] { CheckCancelled(); });
        else
            return stream;
    });
}

template <class T>
bool IntegerEncodingFactory<T>::MinimiseIntegerType(const RefCntPtr<Column>& column) const {
    if (m_meaning != CellMeaning::integer || !m_statistics.HasValue()) return false;
    if (column->HasProperty(usrpropkey::compression)) return false;
    unsigned width = 0;
    const wchar_t* name = narrower_type(m_statistics.GetMinimumValue(), m_statistics.GetMaximumValue(), width);
    if (!name) return false;
    const usrtype* const type = builtin::primitive_type(name);
    const RefCntPtr<DataStream> stream = Narrow(column->GetData(), type, width);
    column->SetType(type);
    column->SetData(stream);
    return true;
}

template <class T>
bool IntegerEncodingFactory<T>::MinimiseTokenWidth(const RefCntPtr<Column>& column) const {
    if (m_meaning != CellMeaning::token || !column->GetHeap()) return false;
    const unsigned width = column->GetMinimalTokenSize();
    if (width >= sizeof(T)) return false;
    const RefCntPtr<DataStream> stream = Narrow(column->GetData(), column->GetType(), width);
    column->SetProperty(usrpropkey::storagewidth, std::to_wstring(width));
    column->SetData(stream);
    return true;
}

template class IntegerEncodingFactory<char>;
template class IntegerEncodingFactory<short>;
template class IntegerEncodingFactory<int>;
template class IntegerEncodingFactory<long long>;

}  // namespace qve
