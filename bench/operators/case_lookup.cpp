// A choice among constants for one column, as a case of comparisons and as a lookup in a table: which number of
// branches makes the lookup the faster one.

#include <benchmark/benchmark.h>

#include <random>
#include <string>

#include "algebra/CaseExp.h"
#include "algebra/ColumnExp.h"
#include "algebra/ConstantExp.h"
#include "algebra/LeafTable.h"
#include "algebra/LookupExp.h"
#include "algebra/MapExp.h"
#include "algebra/Scan.h"
#include "primitives/define_primitives.h"
#include "storage/Column.h"
#include "storage/stream/TempFileDataStream.h"
#include "types/builtin.h"
#include "types/types_initialization.h"

namespace qve {
namespace {

constexpr unsigned rows = 1u << 20;
constexpr unsigned pageSize = 1024;

/// Random keys "k", of twice as many numbers as there are branches.
RefCntPtr<LeafTable> MakeRows(unsigned branches) {
    static const bool once = (types_initialization(), define_primitives(), true);
    (void)once;
    std::mt19937_64 random(branches);
    std::vector<int> keys(rows);
    for (int& key : keys) key = static_cast<int>(random() % (2 * branches)) * 1000;
    usrprops properties = builtin::primitive_props(L"long");
    properties.set(usrpropkey::name, L"k");
    properties.set(usrpropkey::not_null, true);
    auto column = MakeRef<Column>(std::move(properties), MakeRef<TempFileDataStream>());
    column->GetData()->Append(keys.data(), rows * sizeof(int));
    ColumnMap columns;
    columns.emplace(L"k", std::move(column));
    return MakeRef<LeafTable>(L"sample", std::move(columns));
}

usratom Number(unsigned value) {
    return usratom(static_cast<int>(value));
}

usratom Nothing() {
    return usratom(-1);
}

RefCntPtr<Exp> MakeCase(unsigned branches) {
    Exp::Arguments arguments;
    for (unsigned b = 0; b < branches; ++b) {
        arguments.push_back(
            MakeRef<MapBinaryExp>(L"", L"eq", MakeRef<ColumnExp>(L"k"), MakeRef<ConstantExp>(Number(b * 1000))));
        arguments.push_back(MakeRef<ConstantExp>(Number(b)));
    }
    arguments.push_back(MakeRef<ConstantExp>(Nothing()));
    return MakeRef<CaseExp>(L"chosen", std::move(arguments));
}

RefCntPtr<Exp> MakeLookup(unsigned branches) {
    const usrtype* const type = Nothing().type();
    LookupTable table({type}, type);
    for (unsigned b = 0; b < branches; ++b) table.Add({Number(b * 1000), Number(b)});
    return MakeRef<LookupExp>(L"chosen", Exp::Arguments{MakeRef<ColumnExp>(L"k")}, table.Finish(), Nothing());
}

template <RefCntPtr<Exp> (*Make)(unsigned)>
void Choose(benchmark::State& state) {
    const auto branches = static_cast<unsigned>(state.range(0));
    const RefCntPtr<LeafTable> table = MakeRows(branches);
    for (auto _ : state) {
        const auto scan = MakeRef<Scan>(table);
        const RefCntPtr<Exp> exp = Make(branches);
        exp->AllocateColumn(scan.get());
        while (const unsigned extent = scan->Next(pageSize)) {
            exp->Evaluate(extent, extent, nullptr, scan.get());
            benchmark::DoNotOptimize(exp->GetResult().data);
        }
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * rows);
}

BENCHMARK(Choose<MakeCase>)->Name("choose/case")->DenseRange(4, 12, 2)->Arg(16)->Arg(64);
BENCHMARK(Choose<MakeLookup>)->Name("choose/lookup")->DenseRange(4, 12, 2)->Arg(16)->Arg(64);

}  // namespace
}  // namespace qve
