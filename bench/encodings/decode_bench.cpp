// Reading and writing encoded integer columns, against memcpy of the same plain bytes. "ratio" is the time of the case
// over the time of memcpy; both are timed in turns within one case, so that a busy machine slows them alike.

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "storage/Column.h"
#include "storage/EncodingFactory.h"
#include "storage/stream/TempFileDataStream.h"
#include "types/builtin.h"
#include "types/types_initialization.h"

namespace qve {
namespace {

using Mask = EncodingFactory::Mask;
using Clock = std::chrono::steady_clock;

constexpr uint64_t rows = 1 << 20;
constexpr uint64_t page = 1024;

// Cells of T for which the encoding of `mask` is the best one.
template <class T>
std::vector<T> make_cells(uint64_t mask) {
    std::mt19937_64 random(42);
    std::vector<T> cells(rows);
    T sum = 0;
    for (uint64_t row = 0; row < rows; ++row) {
        switch (mask) {
            case Mask::FrameOfReference:
                cells[row] = static_cast<T>(1000 + random() % 500);
                break;
            case Mask::Delta:
                cells[row] = sum = static_cast<T>(sum + random() % 30);
                break;
            case Mask::Dictionary:
                cells[row] = static_cast<T>((random() % 200) * 0x9E3779B97F4A7C15u);
                break;
            case Mask::RunLength:
                cells[row] = static_cast<T>((row / 12) * 0x9E3779B97F4A7C15u);
                break;
            case Mask::Affine:
                cells[row] = static_cast<T>(7 * row);
                break;
            default:
                cells[row] = static_cast<T>(random());
        }
    }
    return cells;
}

RefCntPtr<Column> new_column(unsigned width) {
    static const bool once = (types_initialization(), true);
    (void)once;
    return MakeRef<Column>(builtin::primitive_props(width == 8 ? L"bigint" : width == 4 ? L"long" : L"short"));
}

template <class T>
RefCntPtr<DataStream> encode(const std::vector<T>& cells, uint64_t mask) {
    const auto factory = EncodingFactory::CreateFactory(mask, *new_column(sizeof(T)));
    RefCntPtr<DataStream> stream = MakeRef<TempFileDataStream>();
    for (uint64_t row = 0; row < cells.size(); row += page)
        stream = factory->AppendStream(stream, cells.data() + row, page * sizeof(T));
    return factory->FinaliseStream(stream);
}

template <class Work>
double seconds(Work work) {
    const auto start = Clock::now();
    work();
    return std::chrono::duration<double>(Clock::now() - start).count();
}

// The same bytes copied page by page into one page, as a reader of plain cells would at the worst.
template <class T>
void copy_pages(const std::vector<T>& cells, std::vector<T>& into) {
    for (uint64_t row = 0; row < cells.size(); row += page) {
        std::memcpy(into.data(), cells.data() + row, page * sizeof(T));
        benchmark::DoNotOptimize(into.data());
        benchmark::ClobberMemory();
    }
}

template <class T>
void decode(benchmark::State& state, uint64_t mask) {
    const std::vector<T> cells = make_cells<T>(mask);
    const RefCntPtr<DataStream> stream = encode(cells, mask);
    const std::wstring name(EncodingFactory::GetEncodingType(stream.get()));
    state.SetLabel(std::string(name.begin(), name.end()));
    std::vector<T> target(page);
    double decoding = 0, copying = 0;
    for (auto _ : state) {
        copying += seconds([&] { copy_pages(cells, target); });
        const double time = seconds([&] {
            for (uint64_t row = 0; row < rows; row += page) {
                stream->Seek(row * sizeof(T), page * sizeof(T));
                benchmark::DoNotOptimize(stream->GetInput(0));
            }
        });
        decoding += time;
        state.SetIterationTime(time);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * rows * sizeof(T)));
    state.counters["ratio"] = decoding / copying;
    state.counters["stored"] = static_cast<double>(EncodingFactory::GetStorageStream(stream)->GetSize()) /
                               static_cast<double>(rows * sizeof(T));
}

template <class T>
void append(benchmark::State& state, uint64_t mask) {
    const std::vector<T> cells = make_cells<T>(mask);
    std::vector<T> target(page);
    double encoding = 0, copying = 0;
    for (auto _ : state) {
        copying += seconds([&] { copy_pages(cells, target); });
        const double time = seconds([&] { benchmark::DoNotOptimize(encode(cells, Mask::All)); });
        encoding += time;
        state.SetIterationTime(time);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * rows * sizeof(T)));
    state.counters["ratio"] = encoding / copying;
}

template <class T>
void register_cases(const std::string& type) {
    const std::pair<const char*, uint64_t> encodings[] = {{"for", Mask::FrameOfReference}, {"delta", Mask::Delta},
                                                          {"dict", Mask::Dictionary},      {"rle", Mask::RunLength},
                                                          {"affine", Mask::Affine},        {"none", Mask::None}};
    for (const auto& [name, mask] : encodings) {
        const uint64_t encoding = mask;
        const std::string suffix = "/" + type + "/" + name;
        benchmark::RegisterBenchmark(("decode" + suffix).c_str(), [=](benchmark::State& state) {
            decode<T>(state, encoding);
        })->UseManualTime();
        benchmark::RegisterBenchmark(("append" + suffix).c_str(), [=](benchmark::State& state) {
            append<T>(state, encoding);
        })->UseManualTime();
    }
}

const bool registered = [] {
    register_cases<int64_t>("bigint");
    register_cases<int32_t>("long");
    register_cases<int16_t>("short");
    return true;
}();

}  // namespace
}  // namespace qve
