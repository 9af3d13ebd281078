// Splitting text into fields, against memcpy of the same bytes. "ratio" is the time of the case over that of memcpy,
// both timed in turns within one case.

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "ingest/FieldSplitter.h"
#include "types/parse_config.h"

namespace qve {
namespace {

using Clock = std::chrono::steady_clock;

constexpr size_t chunk = size_t{1} << 20;

// Records of `fields` fields of about `length` bytes, every `quoted`th in quotes.
std::string make_text(unsigned fields, unsigned length, unsigned quoted) {
    std::mt19937 random(1);
    std::string text;
    for (unsigned field = 0; text.size() < 16 * chunk; ++field) {
        const std::string value(1 + random() % (2 * length), static_cast<char>('a' + field % 26));
        text += quoted && field % quoted == 0 ? "\"" + value + ", \"\"\"" : value;
        text += field % fields == fields - 1 ? '\n' : ',';
    }
    return text;
}

void split(benchmark::State& state) {
    const std::string text = make_text(static_cast<unsigned>(state.range(0)), static_cast<unsigned>(state.range(1)),
                                       static_cast<unsigned>(state.range(2)));
    const FieldSplitter splitter{parse_config()};
    SplitText found;
    std::vector<char> copy(chunk);
    double splitting = 0, copying = 0;
    for (auto _ : state) {
        const auto start = Clock::now();
        for (size_t at = 0; at + chunk <= text.size(); at += chunk) {
            std::memcpy(copy.data(), text.data() + at, chunk);
            benchmark::ClobberMemory();
        }
        const auto middle = Clock::now();
        for (size_t at = 0; at + chunk <= text.size(); at += chunk) {
            splitter.Split(text.data() + at, chunk, false, found);
            benchmark::DoNotOptimize(found.length);
        }
        const double seconds = std::chrono::duration<double>(Clock::now() - middle).count();
        splitting += seconds;
        copying += std::chrono::duration<double>(middle - start).count();
        state.SetIterationTime(seconds);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * (text.size() / chunk * chunk)));
    state.counters["ratio"] = splitting / copying;
}
BENCHMARK(split)
    ->ArgNames({"fields", "length", "quoted"})
    ->Args({20, 7, 0})
    ->Args({20, 7, 40})
    ->Args({5, 40, 0})
    ->Args({40, 10, 3})
    ->UseManualTime();

}  // namespace
}  // namespace qve
