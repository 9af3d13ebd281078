// The hot paths of import below the splitter: parsing values, and finding and storing text in a heap.

#include <benchmark/benchmark.h>

#include <cstdio>
#include <random>
#include <string>
#include <vector>

#include "storage/stream/MemoryDataStream.h"
#include "types/calendar.h"
#include "types/cuckoo_hash.h"
#include "types/parse_value.h"
#include "types/types_initialization.h"
#include "types/usrheap.h"
#include "types/varchar.h"

namespace qve {
namespace {

constexpr unsigned seed = 42;
constexpr unsigned value_count = 100000;

// Values one behind the other, as in a column of a text file.
struct text_column {
    std::string text;
    std::vector<unsigned> begin;
    std::vector<unsigned> end;

    template <class Make>
    explicit text_column(Make make) {
        std::mt19937_64 random(seed);
        for (unsigned i = 0; i < value_count; ++i) {
            begin.push_back(static_cast<unsigned>(text.size()));
            text += make(random);
            end.push_back(static_cast<unsigned>(text.size()));
            text += ',';
        }
    }
};

template <class... Args>
std::string format(const char* pattern, Args... args) {
    char buffer[64];
    return {buffer, static_cast<size_t>(std::snprintf(buffer, sizeof buffer, pattern, static_cast<unsigned>(args)...))};
}

template <class T, class Make>
void parse(benchmark::State& state, parse_function<T> parse, Make make) {
    const text_column column(make);
    for (auto _ : state) {
        unsigned failed = 0;
        for (unsigned i = 0; i < value_count; ++i) {
            T value;
            failed += parse(value, column.begin[i], column.end[i], column.text.data(), parse_config::standard());
            benchmark::DoNotOptimize(value);
        }
        if (failed) state.SkipWithError("a value does not parse");
    }
    state.SetItemsProcessed(state.iterations() * value_count);
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(column.text.size()));
}

void parse_integers(benchmark::State& state) {
    parse<long long>(state, parse_bigint_char, [](auto& random) { return format("%u", random() % 1000000); });
}
BENCHMARK(parse_integers);
void parse_decimals(benchmark::State& state) {
    parse<double>(state, parse_double_char,
                  [](auto& random) { return format("%u.%02u", random() % 10000, random() % 100); });
}
BENCHMARK(parse_decimals);
void parse_dates(benchmark::State& state) {
    parse<date>(state, parse_iso_date_char, [](auto& random) {
        return format("20%02u-%02u-%02u", random() % 30, random() % 12 + 1, random() % 28 + 1);
    });
}
BENCHMARK(parse_dates);
void parse_datetimes(benchmark::State& state) {
    parse<datetime>(state, parse_iso_datetime_char, [](auto& random) {
        return format("20%02u-%02u-15 %02u:%02u:07", random() % 30, random() % 12 + 1, random() % 24, random() % 60);
    });
}
BENCHMARK(parse_datetimes);

// Putting a million texts of which `range` are distinct, a thousand at a time.
void heap_put(benchmark::State& state) {
    constexpr unsigned chunk = 1000;
    constexpr unsigned count = 1000000;
    std::mt19937_64 random(seed);
    std::vector<std::string> distinct;
    for (unsigned i = 0; i < state.range(0); ++i) distinct.push_back(format("Customer number %09u", i));
    std::vector<std::string_view> values(count);
    for (auto& value : values) value = distinct[random() % distinct.size()];
    std::vector<unsigned long long> tokens(chunk);
    for (auto _ : state) {
        const auto stream = MakeRef<MemoryDataStream>();
        const auto heap = varchar::usrtypeof(varchar::clob_precision, 1)->heap(stream.get());
        for (unsigned from = 0; from < count; from += chunk)
            heap->put_bytes(chunk, tokens.data(), values.data() + from);
    }
    state.SetItemsProcessed(state.iterations() * count);
}
BENCHMARK(heap_put)->Arg(100)->Arg(10000)->Arg(1000000)->Unit(benchmark::kMillisecond);

// Looking up pages of keys in a table of `range` of them.
void cuckoo_lookup(benchmark::State& state) {
    constexpr unsigned page = 1024;
    const auto count = static_cast<unsigned>(state.range(0));
    std::mt19937 random(seed);
    std::vector<unsigned> keys(count);
    for (unsigned& key : keys) key = random();
    cuckoo_hash<unsigned, unsigned> table;
    for (unsigned i = 0; i < count; ++i) table.insert(keys[i], i);
    std::vector<unsigned> sought(page * 1000);
    for (unsigned& key : sought) key = keys[random() % count];
    unsigned values[page];
    unsigned misses[page + 1];
    for (auto _ : state) {
        for (unsigned from = 0; from < sought.size(); from += page) {
            benchmark::DoNotOptimize(table.lookup(page, misses, values, sought.data() + from));
        }
    }
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(sought.size()));
}
BENCHMARK(cuckoo_lookup)->Arg(1000)->Arg(100000)->Arg(1000000);

void cuckoo_insert(benchmark::State& state) {
    const auto count = static_cast<unsigned>(state.range(0));
    std::mt19937 random(seed);
    std::vector<unsigned> keys(count);
    for (unsigned& key : keys) key = random();
    for (auto _ : state) {
        cuckoo_hash<unsigned, unsigned> table;
        for (unsigned i = 0; i < count; ++i) table.insert(keys[i], i);
        benchmark::DoNotOptimize(table.size());
    }
    state.SetItemsProcessed(state.iterations() * count);
}
BENCHMARK(cuckoo_insert)->Arg(1000)->Arg(1000000);

void civil_dates(benchmark::State& state) {
    std::mt19937 random(seed);
    std::vector<int> days(4096);
    for (int& day : days) day = 2415000 + static_cast<int>(random() % 60000);
    for (auto _ : state) {
        int sum = 0;
        for (const int day : days) sum += calendar::civil(day).month;
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(days.size()));
}
BENCHMARK(civil_dates);

}  // namespace
}  // namespace qve

int main(int argc, char** argv) {
    qve::types_initialization();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
