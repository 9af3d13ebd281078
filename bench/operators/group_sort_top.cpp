// Groups of 4, 10 thousand and a million keys, a sort and the ten best rows as plans, next to the loops that one would
// write by hand for the same columns.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <map>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#include "algebra/Aggr.h"
#include "algebra/AggrExp.h"
#include "algebra/ColumnExp.h"
#include "algebra/LeafTable.h"
#include "algebra/Order.h"
#include "algebra/Scan.h"
#include "algebra/TopN.h"
#include "primitives/define_primitives.h"
#include "storage/Column.h"
#include "storage/stream/TempFileDataStream.h"
#include "types/builtin.h"
#include "types/types_initialization.h"

namespace qve {
namespace {

constexpr unsigned rows = 1u << 22;
constexpr unsigned pageSize = 1024;

/// Random integer keys "k" below a bound and values "v".
struct Sample {
    std::vector<int> keys;
    std::vector<double> values;
    RefCntPtr<LeafTable> table;
};

RefCntPtr<Column> MakeColumn(const wchar_t* name, const wchar_t* type, const void* cells, uint64_t bytes) {
    usrprops properties = builtin::primitive_props(type);
    properties.set(usrpropkey::name, name);
    properties.set(usrpropkey::not_null, true);
    auto column = MakeRef<Column>(std::move(properties), MakeRef<TempFileDataStream>());
    column->GetData()->Append(cells, bytes);
    return column;
}

const Sample& SampleOf(unsigned distinct) {
    static const bool once = (types_initialization(), define_primitives(), true);
    (void)once;
    static std::map<unsigned, Sample> samples;
    Sample& sample = samples[distinct];
    if (sample.table) return sample;
    std::mt19937_64 random(distinct);
    sample.keys.resize(rows);
    sample.values.resize(rows);
    for (int& key : sample.keys) key = static_cast<int>(random() % distinct);
    for (double& value : sample.values) value = static_cast<double>(random() >> 11) * 0x1p-53;
    ColumnMap columns;
    columns.emplace(L"k", MakeColumn(L"k", L"long", sample.keys.data(), rows * sizeof(int)));
    columns.emplace(L"v", MakeColumn(L"v", L"double", sample.values.data(), rows * sizeof(double)));
    sample.table = MakeRef<LeafTable>(L"sample", std::move(columns));
    return sample;
}

void Finish(benchmark::State& state) {
    state.SetItemsProcessed(state.iterations() * rows);
}

void GroupPlan(benchmark::State& state) {
    const Sample& sample = SampleOf(static_cast<unsigned>(state.range(0)));
    for (auto _ : state) {
        const Aggr plan(MakeRef<Scan>(sample.table), ColumnNames{L"k"},
                        {MakeRef<AggrBinaryExp>(L"s", L"sum", MakeRef<ColumnExp>(L"v")),
                         MakeRef<AggrUnaryExp>(L"n", L"countstar")});
        benchmark::DoNotOptimize(const_cast<Aggr&>(plan).Build(pageSize));
    }
    Finish(state);
}
BENCHMARK(GroupPlan)->Arg(4)->Arg(10000)->Arg(1000000)->Unit(benchmark::kMillisecond);

void GroupByHand(benchmark::State& state) {
    const auto distinct = static_cast<unsigned>(state.range(0));
    const Sample& sample = SampleOf(distinct);
    for (auto _ : state) {
        struct Accumulator {
            double sum = 0;
            long long count = 0;
        };
        std::vector<Accumulator> groups(distinct);
        for (unsigned row = 0; row < rows; ++row) {
            Accumulator& group = groups[static_cast<unsigned>(sample.keys[row])];
            group.sum += sample.values[row];
            ++group.count;
        }
        benchmark::DoNotOptimize(groups.data());
    }
    Finish(state);
}
BENCHMARK(GroupByHand)->Arg(4)->Arg(10000)->Arg(1000000)->Unit(benchmark::kMillisecond);

void SortPlan(benchmark::State& state) {
    const Sample& sample = SampleOf(1000000);
    for (auto _ : state) {
        Order plan(sample.table, {{L"v", false}, {L"k", false}});
        plan.GetColumn(L"k");
        benchmark::DoNotOptimize(plan.Build(pageSize));
    }
    Finish(state);
}
BENCHMARK(SortPlan)->Unit(benchmark::kMillisecond);

void SortByHand(benchmark::State& state) {
    const Sample& sample = SampleOf(1000000);
    for (auto _ : state) {
        std::vector<unsigned> order(rows);
        std::iota(order.begin(), order.end(), 0u);
        std::sort(order.begin(), order.end(), [&](unsigned a, unsigned b) {
            return sample.values[a] != sample.values[b] ? sample.values[a] < sample.values[b]
                                                        : sample.keys[a] < sample.keys[b];
        });
        std::vector<int> sorted(rows);
        for (unsigned row = 0; row < rows; ++row) sorted[row] = sample.keys[order[row]];
        benchmark::DoNotOptimize(sorted.data());
    }
    Finish(state);
}
BENCHMARK(SortByHand)->Unit(benchmark::kMillisecond);

void TopPlan(benchmark::State& state) {
    const Sample& sample = SampleOf(1000000);
    for (auto _ : state) {
        TopN plan(MakeRef<Scan>(sample.table), {{L"v", true}, {L"k", false}}, 10);
        benchmark::DoNotOptimize(plan.Build(pageSize));
    }
    Finish(state);
}
BENCHMARK(TopPlan)->Unit(benchmark::kMillisecond);

void TopByHand(benchmark::State& state) {
    const Sample& sample = SampleOf(1000000);
    for (auto _ : state) {
        std::vector<std::pair<double, int>> heap;  // the worst on top
        const auto better = [](const auto& a, const auto& b) {
            return a.first != b.first ? a.first > b.first : a.second < b.second;
        };
        double cutoff = -1;
        for (unsigned row = 0; row < rows; ++row) {
            if (sample.values[row] < cutoff) continue;
            heap.emplace_back(sample.values[row], sample.keys[row]);
            std::push_heap(heap.begin(), heap.end(), better);
            if (heap.size() > 10) {
                std::pop_heap(heap.begin(), heap.end(), better);
                heap.pop_back();
                cutoff = heap.front().first;
            }
        }
        benchmark::DoNotOptimize(heap.data());
    }
    Finish(state);
}
BENCHMARK(TopByHand)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace qve
