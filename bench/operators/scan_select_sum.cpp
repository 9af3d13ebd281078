// A scan, a filter and a sum as a plan, next to the loop that one would write by hand for the same columns.

#include <benchmark/benchmark.h>

#include <random>
#include <string>
#include <vector>

#include "algebra/Aggr.h"
#include "algebra/AggrExp.h"
#include "algebra/ColumnExp.h"
#include "algebra/ConstantExp.h"
#include "algebra/LeafTable.h"
#include "algebra/MapExp.h"
#include "algebra/Scan.h"
#include "algebra/Select.h"
#include "algebra/SelectExp.h"
#include "primitives/define_primitives.h"
#include "storage/Column.h"
#include "storage/EncodingFactory.h"
#include "storage/stream/TempFileDataStream.h"
#include "types/builtin.h"
#include "types/types_initialization.h"
#include "types/usrheap.h"
#include "types/varchar.h"

namespace qve {
namespace {

constexpr unsigned rows = 1u << 22;

struct Data {
    std::vector<int> keys;
    std::vector<double> values;
    RefCntPtr<LeafTable> table;
};

RefCntPtr<Column> MakeColumn(const wchar_t* name, const wchar_t* type, const void* cells, uint64_t bytes,
                             uint64_t encodings) {
    usrprops properties = builtin::primitive_props(type);
    properties.set(usrpropkey::name, name);
    auto column = MakeRef<Column>(std::move(properties), MakeRef<TempFileDataStream>());
    const auto factory = EncodingFactory::CreateFactory(encodings, *column);
    column->SetData(factory->FinaliseStream(factory->AppendStream(column->GetData(), cells, bytes)));
    factory->ExtractMetadata(column);
    return column;
}

RefCntPtr<Column> MakeTexts(unsigned distinct, std::mt19937& random) {
    usrprops properties = varchar::propsof(50, 1);
    properties.set(usrpropkey::name, L"t");
    properties.set(usrpropkey::compression, L"heap");
    properties.set(usrpropkey::storagewidth, L"4");
    properties.set(usrpropkey::distinct, L"true");
    auto column = MakeRef<Column>(std::move(properties), MakeRef<TempFileDataStream>(), MakeRef<TempFileDataStream>());
    std::vector<unsigned> tokens;
    for (unsigned i = 0; i < distinct; ++i) {
        const std::string text = "text number " + std::to_string(i);
        tokens.push_back(static_cast<unsigned>(column->GetHeap()->put_bytes(text.data(), text.size())));
    }
    std::vector<unsigned> cells(rows);
    for (unsigned& cell : cells) cell = tokens[random() % distinct];
    column->GetData()->Append(cells.data(), cells.size() * sizeof(unsigned));
    return column;
}

Data& Sample(uint64_t encodings) {
    static const bool once = (types_initialization(), define_primitives(), true);
    (void)once;
    static Data plain;
    static Data encoded;
    Data& data = encodings ? encoded : plain;
    if (data.table) return data;
    std::mt19937 random(1);
    data.keys.resize(rows);
    data.values.resize(rows);
    for (unsigned row = 0; row < rows; ++row) {
        data.keys[row] = static_cast<int>(random() % 1000);
        data.values[row] = static_cast<double>(random() % 100000) / 8;
    }
    ColumnMap columns;
    columns.emplace(L"k", MakeColumn(L"k", L"long", data.keys.data(), rows * sizeof(int), encodings));
    columns.emplace(L"v", MakeColumn(L"v", L"double", data.values.data(), rows * sizeof(double), encodings));
    columns.emplace(L"t", MakeTexts(200, random));
    data.table = MakeRef<LeafTable>(L"sample", std::move(columns));
    return data;
}

double RunPlan(const Data& data, RefCntPtr<Exp> predicate) {
    const auto scan = MakeRef<Scan>(data.table, ColumnNames{L"k", L"t", L"v"});
    RefCntPtr<DataFlow> flow = scan;
    if (predicate) flow = MakeRef<Select>(scan, std::move(predicate));
    Aggr sum(flow, {}, {MakeRef<AggrBinaryExp>(L"s", L"sum", MakeRef<ColumnExp>(L"v"))});
    sum.Build(Namespace::s_blockLength);
    const RefCntPtr<Column> result = sum.GetColumn(L"s");
    result->Seek(0, 1);
    return *result->GetInput().values<double>();
}

RefCntPtr<Exp> Below(int bound) {
    return MakeRef<SelectBinaryExp>(L"lt", MakeRef<ColumnExp>(L"k"), MakeRef<ConstantExp>(usratom(bound)));
}

usratom Text(const std::string& text) {
    return usratom(varchar::usrtypeof(50, 1), text.data(), text.size());
}

void BM_HandWrittenLoop(benchmark::State& state) {
    const Data& data = Sample(0);
    const int bound = static_cast<int>(state.range(0));
    for (auto _ : state) {
        double sum = 0;
        for (unsigned row = 0; row < rows; ++row) {
            if (data.keys[row] < bound) sum += data.values[row];
        }
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * rows);
}
BENCHMARK(BM_HandWrittenLoop)->Arg(10)->Arg(500)->Arg(1000)->Unit(benchmark::kMillisecond);

void BM_ScanSelectSum(benchmark::State& state) {
    const Data& data = Sample(static_cast<uint64_t>(state.range(1)));
    for (auto _ : state) benchmark::DoNotOptimize(RunPlan(data, Below(static_cast<int>(state.range(0)))));
    state.SetItemsProcessed(state.iterations() * rows);
}
BENCHMARK(BM_ScanSelectSum)
    ->ArgsProduct({{10, 500, 1000}, {0, EncodingFactory::Mask::All}})
    ->ArgNames({"below", "encodings"})
    ->Unit(benchmark::kMillisecond);

// By token, once for each distinct value, and value by value.
void BM_SelectText(benchmark::State& state, const wchar_t* op, const char* text) {
    const Data& data = Sample(0);
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            RunPlan(data, MakeRef<SelectBinaryExp>(op, MakeRef<ColumnExp>(L"t"), MakeRef<ConstantExp>(Text(text)))));
    }
    state.SetItemsProcessed(state.iterations() * rows);
}
BENCHMARK_CAPTURE(BM_SelectText, equal, L"eq", "text number 17")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_SelectText, contains, L"contains", "17")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_SelectText, less, L"lt", "text number 17")->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace qve
