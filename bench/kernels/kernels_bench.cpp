// One kernel of each family and mode over a page of 1024 rows, at every vector level, and beside it a plain loop that
// does the same over the same vectors. `ratio` is the kernel's time over the loop's.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <random>
#include <string>
#include <vector>

#include "primitives/define_primitives.h"
#include "primitives/primitive_directory.h"
#include "primitives/primitive_func.h"
#include "primitives/vector_level.h"
#include "system/unicode.h"
#include "types/datatraits.h"
#include "types/input_column.h"
#include "types/output_column.h"
#include "types/types_initialization.h"

namespace qve {
namespace {

constexpr unsigned rows = 1024;

/// A page: the vectors that kernels and loops read and write.
struct page {
    std::vector<int> ints, other_ints;
    std::vector<double> doubles, other_doubles, whole_doubles;
    std::vector<bigint> bigints;
    std::vector<bit> bits;
    std::vector<unsigned> groups, one_group, index, selection;
    std::vector<date> dates;

    std::vector<double> out_doubles;
    std::vector<bigint> out_bigints;
    std::vector<int> out_ints;
    std::vector<unsigned> out_positions;
    std::vector<bit> out_bits;

    page() {
        std::mt19937 random(1);
        for (unsigned i = 0; i < rows; ++i) {
            ints.push_back(static_cast<int>(random() % 1000));
            other_ints.push_back(static_cast<int>(random() % 1000));
            whole_doubles.push_back(random() / 7.0);
            doubles.push_back(random() % 50 ? random() / 7.0 : datatraits<double>::null);
            other_doubles.push_back(random() / 9.0);
            bigints.push_back(random());
            bits.push_back({static_cast<unsigned char>(random() % 2)});
            groups.push_back(random() % 6);
            index.push_back(random() % rows);
            dates.push_back({2451544 + static_cast<unsigned>(random() % 9000)});
            if (random() % 2) selection.push_back(i);
        }
        one_group.assign(rows, 0);
        out_doubles.resize(rows);
        out_bigints.resize(rows);
        out_ints.resize(rows);
        out_positions.resize(rows);
        out_bits.resize(rows);
    }
};

page& data() {
    static page instance;
    return instance;
}

template <class T>
input_column in(const std::vector<T>& values, unsigned char flags = 0) {
    return {values.data(), nullptr, sizeof(T), static_cast<unsigned>(values.size()), flags};
}
template <class T>
output_column out(std::vector<T>& values) {
    return {values.data(), nullptr, sizeof(T), static_cast<unsigned>(values.size()), nullptr};
}

template <class F>
F kernel(const wchar_t* klass, const wchar_t* operation, const primitive::argument_list& arguments) {
    for (primitive* p : primitive::resolve(operation, arguments)) {
        if (p->klass() == klass) return ResolvePrimitive<F>(p);
    }
    throw QVE_LogicError(0, "no kernel " + narrow(primitive_directory::signature(operation, arguments)));
}

template <class Work>
double seconds_of(Work work) {
    double best = 1;
    for (int attempt = 0; attempt < 20; ++attempt) {
        const auto start = std::chrono::steady_clock::now();
        for (int i = 0; i < 200; ++i) work();
        const std::chrono::duration<double> spent = std::chrono::steady_clock::now() - start;
        best = std::min(best, spent.count() / 200);
    }
    return best;
}

/// Registers a kernel at each level, and the plain loop that it is compared with.
template <class Kernel, class Loop>
void compare(const std::string& name, Kernel run, Loop loop) {
    benchmark::RegisterBenchmark((name + "/loop").c_str(), [loop](benchmark::State& state) {
        for (auto _ : state) {
            loop();
            benchmark::ClobberMemory();
        }
        state.SetItemsProcessed(state.iterations() * rows);
    });
    const std::pair<vector_level, const char*> levels[] = {
        {vector_level::scalar, "scalar"}, {vector_level::sse41, "sse41"}, {vector_level::avx2, "avx2"}};
    for (const auto& [level, label] : levels) {
        if (level > supported_vector_level()) continue;
        const vector_level chosen = level;
        benchmark::RegisterBenchmark((name + "/" + label).c_str(), [run, loop, chosen](benchmark::State& state) {
            set_vector_level(chosen);
            for (auto _ : state) {
                run();
                benchmark::ClobberMemory();
            }
            state.SetItemsProcessed(state.iterations() * rows);
            state.counters["ratio"] = seconds_of([&] {
                                          run();
                                          benchmark::ClobberMemory();
                                      }) /
                                      seconds_of([&] {
                                          loop();
                                          benchmark::ClobberMemory();
                                      });
        });
    }
}

void register_maps() {
    page& p = data();
    const auto plus = kernel<binary_func>(primitive::klassMap, L"plus", {{L"double", L"col"}, {L"double", L"col"}});
    compare(
        "map_plus_double_col_col_nulls",
        [=, &p] { plus(rows, out(p.out_doubles), in(p.doubles), in(p.other_doubles), nullptr); },
        [&p] {
            for (unsigned i = 0; i < rows; ++i) {
                const bool null = is_null(p.doubles[i]) || is_null(p.other_doubles[i]);
                p.out_doubles[i] = null ? datatraits<double>::null : p.doubles[i] + p.other_doubles[i];
            }
        });
    const unsigned char whole = column_flags::not_null;
    compare(
        "map_plus_double_col_col_whole",
        [=, &p] { plus(rows, out(p.out_doubles), in(p.whole_doubles, whole), in(p.other_doubles, whole), nullptr); },
        [&p] {
            for (unsigned i = 0; i < rows; ++i) p.out_doubles[i] = p.whole_doubles[i] + p.other_doubles[i];
        });
    compare(
        "map_plus_double_col_col_selected",
        [=, &p] {
            plus(static_cast<unsigned>(p.selection.size()), out(p.out_doubles), in(p.doubles), in(p.other_doubles),
                 p.selection.data());
        },
        [&p] {
            for (const unsigned i : p.selection) {
                const bool null = is_null(p.doubles[i]) || is_null(p.other_doubles[i]);
                p.out_doubles[i] = null ? datatraits<double>::null : p.doubles[i] + p.other_doubles[i];
            }
        });
    const auto times = kernel<binary_func>(primitive::klassMap, L"times", {{L"long", L"col"}, {L"long", L"val"}});
    compare(
        "map_times_long_col_val", [=, &p] { times(rows, out(p.out_bigints), in(p.ints), in(p.other_ints), nullptr); },
        [&p] {
            const bigint y = p.other_ints[0];
            for (unsigned i = 0; i < rows; ++i) {
                p.out_bigints[i] = is_null(p.ints[i]) ? datatraits<bigint>::null : p.ints[i] * y;
            }
        });
    const auto divide = kernel<binary_func>(primitive::klassMap, L"divide", {{L"double", L"col"}, {L"long", L"col"}});
    compare(
        "map_divide_double_long", [=, &p] { divide(rows, out(p.out_doubles), in(p.doubles), in(p.ints), nullptr); },
        [&p] {
            for (unsigned i = 0; i < rows; ++i) {
                const bool null = is_null(p.doubles[i]) || is_null(p.ints[i]) || p.ints[i] == 0;
                p.out_doubles[i] = null ? datatraits<double>::null : p.doubles[i] / p.ints[i];
            }
        });
    const auto lt = kernel<binary_func>(primitive::klassMap, L"lt", {{L"long", L"col"}, {L"long", L"col"}});
    compare(
        "map_lt_long_col_col", [=, &p] { lt(rows, out(p.out_bits), in(p.ints), in(p.other_ints), nullptr); },
        [&p] {
            for (unsigned i = 0; i < rows; ++i) {
                const bool null = is_null(p.ints[i]) || is_null(p.other_ints[i]);
                p.out_bits[i] = null ? datatraits<bit>::null : bit{p.ints[i] < p.other_ints[i]};
            }
        });
    const auto cast = kernel<unary_func>(primitive::klassMap, L"double", {{L"long", L"col"}});
    compare(
        "map_double_long_col", [=, &p] { cast(rows, out(p.out_doubles), in(p.ints), nullptr); },
        [&p] {
            for (unsigned i = 0; i < rows; ++i) {
                p.out_doubles[i] = is_null(p.ints[i]) ? datatraits<double>::null : p.ints[i];
            }
        });
    const auto hash = kernel<unary_func>(primitive::klassMap, L"hash", {{L"bigint", L"col"}});
    compare(
        "map_hash_bigint_col", [=, &p] { hash(rows, out(p.out_positions), in(p.bigints), nullptr); },
        [&p] {
            for (unsigned i = 0; i < rows; ++i) {
                unsigned long long k = static_cast<unsigned long long>(p.bigints[i]);
                k = (k << 18) + ~k;
                k = (k ^ (k >> 31)) * 21;
                k = (k ^ (k >> 11)) * 65;
                p.out_positions[i] = static_cast<unsigned>(k ^ (k >> 22));
            }
        });
    const auto fetch = kernel<binary_func>(primitive::klassMap, L"fetch", {{L"ulng", L"col"}, {L"double", L"col"}});
    compare(
        "map_fetch_double_ulng", [=, &p] { fetch(rows, out(p.out_doubles), in(p.index), in(p.doubles), nullptr); },
        [&p] {
            for (unsigned i = 0; i < rows; ++i) p.out_doubles[i] = p.doubles[p.index[i]];
        });
    const auto month = kernel<unary_func>(primitive::klassMap, L"month", {{L"date", L"col"}});
    compare(
        "map_month_date", [=, &p] { month(rows, out(p.out_ints), in(p.dates), nullptr); },
        [&p] {
            for (unsigned i = 0; i < rows; ++i) {
                p.out_ints[i] = is_null(p.dates[i]) ? datatraits<int>::null : p.dates[i].civil().month;
            }
        });
}

void register_selects() {
    page& p = data();
    const std::vector<int> tenth{100}, half{500}, most{900};
    const auto lt = kernel<binary_func>(primitive::klassSelect, L"lt", {{L"long", L"col"}, {L"long", L"val"}});
    for (const auto& [label, limits] : {std::pair{"10", tenth}, {"50", half}, {"90", most}}) {
        const std::vector<int> limit = limits;
        compare(
            std::string("sel_lt_long_col_val_") + label,
            [=, &p] { lt(rows, out(p.out_positions), in(p.ints), in(limit), nullptr); },
            [&p, limit] {
                unsigned k = 0;
                for (unsigned i = 0; i < rows; ++i) {
                    p.out_positions[k] = i;
                    k += !is_null(p.ints[i]) & (p.ints[i] < limit[0]);
                }
                benchmark::DoNotOptimize(k);
            });
    }
    compare(
        "sel_lt_long_col_val_selected",
        [=, &p] {
            lt(static_cast<unsigned>(p.selection.size()), out(p.out_positions), in(p.ints), in(half),
               p.selection.data());
        },
        [&p] {
            unsigned k = 0;
            for (const unsigned i : p.selection) {
                p.out_positions[k] = i;
                k += !is_null(p.ints[i]) & (p.ints[i] < 500);
            }
            benchmark::DoNotOptimize(k);
        });
    const auto copy = kernel<unary_func>(primitive::klassSelect, L"copy", {{L"bit", L"col"}});
    compare(
        "sel_copy_bit_col", [=, &p] { copy(rows, out(p.out_positions), in(p.bits), nullptr); },
        [&p] {
            unsigned k = 0;
            for (unsigned i = 0; i < rows; ++i) {
                p.out_positions[k] = i;
                k += p.bits[i].value & 1;
            }
            benchmark::DoNotOptimize(k);
        });
}

void register_aggregates() {
    page& p = data();
    const auto sum = kernel<binary_func>(primitive::klassAggregate, L"sum", {{L"double", L"col"}, {L"ulng", L"col"}});
    const auto fold = [&p](unsigned group, double value) {
        double& accumulator = p.out_doubles[group];
        if (!is_null(value)) accumulator = (is_null(accumulator) ? 0 : accumulator) + value;
    };
    compare(
        "agg_sum_double_one_group",
        [=, &p] { sum(rows, out(p.out_doubles), in(p.doubles), in(p.one_group, column_flags::constant), nullptr); },
        [&p, fold] {
            for (unsigned i = 0; i < rows; ++i) fold(0, p.doubles[i]);
        });
    compare(
        "agg_sum_double_few_groups", [=, &p] { sum(rows, out(p.out_doubles), in(p.doubles), in(p.groups), nullptr); },
        [&p, fold] {
            for (unsigned i = 0; i < rows; ++i) fold(p.groups[i], p.doubles[i]);
        });
    compare(
        "agg_sum_double_many_groups", [=, &p] { sum(rows, out(p.out_doubles), in(p.doubles), in(p.index), nullptr); },
        [&p, fold] {
            for (unsigned i = 0; i < rows; ++i) fold(p.index[i], p.doubles[i]);
        });
    const auto max = kernel<binary_func>(primitive::klassAggregate, L"max", {{L"long", L"col"}, {L"ulng", L"col"}});
    compare(
        "agg_max_long_few_groups", [=, &p] { max(rows, out(p.out_ints), in(p.ints), in(p.groups), nullptr); },
        [&p] {
            for (unsigned i = 0; i < rows; ++i) {
                int& accumulator = p.out_ints[p.groups[i]];
                if (!is_null(p.ints[i])) accumulator = std::max(accumulator, p.ints[i]);
            }
        });
    const auto check = kernel<ternary_func>(primitive::klassAggregate, L"check",
                                            {{L"long", L"col"}, {L"long", L"col"}, {L"ulng", L"col"}});
    compare(
        "agg_check_long", [=, &p] { check(rows, out(p.out_bits), in(p.ints), in(p.other_ints), in(p.index), nullptr); },
        [&p] {
            for (unsigned i = 0; i < rows; ++i) p.out_bits[i] = {p.ints[i] != p.other_ints[p.index[i]]};
        });
}

void register_sorts() {
    page& p = data();
    const auto sort = kernel<sort_func>(primitive::klassSort, L"asc", {{L"ulng", L"col"}, {L"double", L"col"}});
    static std::vector<double> keys;
    static std::vector<unsigned> index;
    static std::vector<std::pair<double, unsigned>> pairs;
    compare(
        "sort_asc_ulng_double",
        [=, &p] {
            keys = p.whole_doubles;
            index = p.index;
            sort(rows, out(index), out(keys));
        },
        [&p] {
            pairs.resize(rows);
            for (unsigned i = 0; i < rows; ++i) pairs[i] = {p.whole_doubles[i], p.index[i]};
            std::sort(pairs.begin(), pairs.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
        });
}

}  // namespace
}  // namespace qve

int main(int argc, char** argv) {
    qve::types_initialization();
    qve::define_primitives();
    qve::register_maps();
    qve::register_selects();
    qve::register_aggregates();
    qve::register_sorts();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
