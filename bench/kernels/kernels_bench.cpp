// One kernel of each family and mode over a page of 1024 rows that stays in the cache, at every vector level, and
// beside it a plain loop over the same vectors that is compiled for this processor. `ns` is the time of a value,
// `ratio` the kernel's time over the loop's, the least of many turns of each, taken by turns.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstring>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "primitives/define_primitives.h"
#include "primitives/pack.h"
#include "primitives/primitive_directory.h"
#include "primitives/primitive_func.h"
#include "primitives/signatures.h"
#include "primitives/vector_level.h"
#include "storage/stream/MemoryDataStream.h"
#include "system/unicode.h"
#include "types/atom_hash.h"
#include "types/datatraits.h"
#include "types/hashfunc.h"
#include "types/input_column.h"
#include "types/output_column.h"
#include "types/types_initialization.h"
#include "types/usrheap.h"
#include "types/varchar.h"

namespace qve {
namespace {

constexpr unsigned rows = 1024;
constexpr unsigned char whole = column_flags::not_null;

std::mt19937_64& random_bits() {
    static std::mt19937_64 random(1);
    return random;
}

/// A value as it stands in tables: numbers below a thousand, days of 25 years.
template <class T>
T sample() {
    const unsigned long long bits = random_bits()();
    if constexpr (std::is_same_v<T, bit>) {
        return {static_cast<unsigned char>(bits % 2)};
    } else if constexpr (std::is_same_v<T, date>) {
        return {2451544 + static_cast<unsigned>(bits % 9000)};
    } else if constexpr (std::is_same_v<T, datetime>) {
        return {2451544ULL * ticks_per_day + bits % (9000ULL * ticks_per_day)};
    } else if constexpr (std::is_floating_point_v<T>) {
        return static_cast<T>(static_cast<double>(bits % 100000) / 7);
    } else {
        return static_cast<T>(bits % 1000 + 1);
    }
}

/// Begins at a cache line, as the pages of columns do.
template <class T>
struct line_allocator {
    using value_type = T;
    line_allocator() = default;
    template <class U>
    line_allocator(const line_allocator<U>&) {}
    T* allocate(size_t count) { return static_cast<T*>(::operator new (count * sizeof(T), std::align_val_t{64})); }
    void deallocate(T* p, size_t) { ::operator delete (p, std::align_val_t{64}); }
    bool operator==(const line_allocator&) const { return true; }
};
template <class T>
using page_of = std::vector<T, line_allocator<T>>;

/// A page of values; every fiftieth may be null.
template <class T>
page_of<T>& page(bool nulls) {
    static std::vector<std::unique_ptr<page_of<T>>> pages;
    auto made = std::make_unique<page_of<T>>();
    for (unsigned i = 0; i < rows; ++i) {
        made->push_back(nulls && random_bits()() % 50 == 0 ? datatraits<T>::null : sample<T>());
    }
    return *pages.emplace_back(std::move(made));
}
page_of<unsigned>& numbers_below(unsigned limit) {
    page_of<unsigned>& numbers = page<unsigned>(false);
    for (unsigned& number : numbers) number = static_cast<unsigned>(random_bits()() % limit);
    return numbers;
}
/// Half of the rows.
const page_of<unsigned>& selection() {
    static const page_of<unsigned> half = [] {
        page_of<unsigned> made;
        for (unsigned i = 0; i < rows; ++i) {
            if (random_bits()() % 2) made.push_back(i);
        }
        return made;
    }();
    return half;
}

template <class T>
input_column in(const page_of<T>& values, unsigned char flags = 0) {
    return {values.data(), nullptr, sizeof(T), static_cast<unsigned>(values.size()), flags};
}
template <class T>
output_column out(page_of<T>& values) {
    return {values.data(), nullptr, sizeof(T), static_cast<unsigned>(values.size()), nullptr};
}

template <class F>
F kernel(const wchar_t* klass, const std::wstring& operation, const primitive::argument_list& arguments) {
    for (primitive* p : primitive::resolve(operation, arguments)) {
        if (p->klass() == klass) return ResolvePrimitive<F>(p);
    }
    throw QVE_LogicError(0, "no kernel " + narrow(primitive_directory::signature(operation, arguments)));
}

template <class T>
primitive::argument col_of() {
    return {std::wstring(datatraits<T>::name), L"col"};
}
template <class T>
primitive::argument val_of() {
    return {std::wstring(datatraits<T>::name), L"val"};
}

template <class Work>
double turn(const Work& work) {
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < 64; ++i) {
        work();
        benchmark::ClobberMemory();
    }
    const std::chrono::duration<double> spent = std::chrono::steady_clock::now() - start;
    return spent.count() / 64;
}

/// Registers a kernel at each level, and the plain loop that it is compared with; `values` is what one call does.
template <class Kernel, class Loop>
void compare(const std::string& name, Kernel run, Loop loop, unsigned values = rows) {
    const std::pair<vector_level, const char*> levels[] = {{vector_level::scalar, "scalar"},
                                                           {vector_level::sse41, "sse41"},
                                                           {vector_level::avx2, "avx2"},
                                                           {vector_level::avx512, "avx512"}};
    for (const auto& [level, label] : levels) {
        if (level > supported_vector_level()) continue;
        const vector_level chosen = level;
        benchmark::RegisterBenchmark((name + "/" + label).c_str(), [=](benchmark::State& state) {
            set_vector_level(chosen);
            double kernel_time = 1;
            double loop_time = 1;
            for (int i = 0; i < 100; ++i) {
                kernel_time = std::min(kernel_time, turn(run));
                loop_time = std::min(loop_time, turn(loop));
            }
            for (auto _ : state) {
                run();
                benchmark::ClobberMemory();
            }
            state.counters["ns"] = kernel_time / values * 1e9;
            state.counters["ratio"] = kernel_time / loop_time;
        });
    }
}

template <class... T>
bool any_null(const T&... values) {
    return (is_null(values) | ...);
}

/// What the loop beside a kernel over whole columns does: where such rows may still give a null, as a sum that is equal
/// to the null's pattern, it reports that, as the kernel must.
enum class whole_result { stays, may_be_null };

/// A map of columns whose rows `row` computes: with nulls, without, and of selected rows.
template <class R, class... A, class Row>
void compare_map(const std::wstring& operation, Row row, whole_result result_of_whole = whole_result::stays) {
    using function = std::conditional_t<sizeof...(A) == 1, unary_func, binary_func>;
    const auto f = kernel<function>(primitive::klassMap, operation, {col_of<A>()...});
    std::string name = "map_" + narrow(operation);
    ((name += "_" + narrow(std::wstring(datatraits<A>::name))), ...);
    page_of<R>& result = page<R>(false);
    R* const to = result.data();
    const auto with = [&](const page_of<A>&... columns) {
        const std::tuple<const A*...> data{columns.data()...};
        compare(
            name + "_nulls", [=, &result, &columns...] { f(rows, out(result), in(columns)..., nullptr); },
            [=] {
                std::apply(
                    [=](const A*... a) {
                        for (unsigned i = 0; i < rows; ++i)
                            to[i] = any_null(a[i]...) ? datatraits<R>::null : row(a[i]...);
                    },
                    data);
            });
        const unsigned* const sel = selection().data();
        const auto count = static_cast<unsigned>(selection().size());
        compare(
            name + "_selected", [=, &result, &columns...] { f(count, out(result), in(columns)..., sel); },
            [=] {
                std::apply(
                    [=](const A*... a) {
                        for (unsigned k = 0; k < count; ++k) {
                            const unsigned i = sel[k];
                            to[i] = any_null(a[i]...) ? datatraits<R>::null : row(a[i]...);
                        }
                    },
                    data);
            },
            count);
    };
    const auto without = [&](const page_of<A>&... columns) {
        const std::tuple<const A*...> data{columns.data()...};
        compare(
            name + "_whole", [=, &result, &columns...] { f(rows, out(result), in(columns, whole)..., nullptr); },
            [=] {
                std::apply(
                    [=](const A*... a) {
                        if (result_of_whole == whole_result::stays) {
                            for (unsigned i = 0; i < rows; ++i) to[i] = row(a[i]...);
                            return;
                        }
                        unsigned_of<R> made = 0;
                        for (unsigned i = 0; i < rows; ++i) {
                            const R result = row(a[i]...);
                            made = static_cast<unsigned_of<R>>(made | is_null(result));
                            to[i] = result;
                        }
                        benchmark::DoNotOptimize(made);
                    },
                    data);
            });
    };
    with(page<A>(true)...);
    without(page<A>(false)...);
}

/// The same with one value as second argument.
template <class R, class A, class B, class Row>
void compare_map_val(const std::wstring& operation, Row row) {
    const auto f = kernel<binary_func>(primitive::klassMap, operation, {col_of<A>(), val_of<B>()});
    page_of<R>& result = page<R>(false);
    const page_of<A>& left = page<A>(false);
    const page_of<B>& right = page<B>(false);
    const std::string name = "map_" + narrow(operation) + "_" + narrow(std::wstring(datatraits<A>::name)) + "_col_" +
                             narrow(std::wstring(datatraits<B>::name)) + "_val_whole";
    compare(
        name, [=, &result, &left, &right] { f(rows, out(result), in(left, whole), in(right), nullptr); },
        [to = result.data(), a = left.data(), b = right[0], row] {
            for (unsigned i = 0; i < rows; ++i) to[i] = row(a[i], b);
        });
}

void register_arithmetic() {
    const auto sum = [](auto x, auto y) { return x + y; };
    const auto wide_sum = [](auto x, auto y) { return bigint{x} + y; };
    const auto product = [](auto x, auto y) { return x * y; };
    const auto wide_product = [](auto x, auto y) { return bigint{x} * y; };
    constexpr auto may_be_null = whole_result::may_be_null;
    compare_map<double, double, double>(L"plus", sum);
    compare_map<bigint, int, int>(L"plus", wide_sum);
    compare_map<bigint, bigint, bigint>(
        L"plus",
        [](bigint x, bigint y) {
            return static_cast<bigint>(static_cast<unsigned long long>(x) + static_cast<unsigned long long>(y));
        },
        may_be_null);
    compare_map<double, double, double>(L"minus", [](double x, double y) { return x - y; });
    compare_map<double, double, double>(L"times", product);
    compare_map<bigint, int, int>(L"times", wide_product);
    compare_map<bigint, bigint, bigint>(L"times", wide_product, may_be_null);
    compare_map_val<bigint, int, int>(L"times", wide_product);
    compare_map<double, double, int>(
        L"divide", [](double x, int y) { return y == 0 ? datatraits<double>::null : x / y; }, may_be_null);
    compare_map<int, int, int>(
        L"div_", [](int x, int y) { return y == 0 ? datatraits<int>::null : x / y; }, may_be_null);
    compare_map<double, double>(L"abs_", [](double x) { return std::fabs(x); });
    // A NaN is above every number, whichever side it is on.
    compare_map<double, double, double>(L"greatest",
                                        [](double x, double y) { return x < y || (y != y && x == x) ? y : x; });
    compare_map<double, double>(L"sqrt", [](double x) { return std::sqrt(x); });
}

void register_comparisons() {
    compare_map<bit, int, int>(L"lt", [](int x, int y) { return bit{x < y}; });
    compare_map<bit, double, double>(L"eq", [](double x, double y) { return bit{x == y}; });
    compare_map<bit, double>(L"isnull", [](double x) { return bit{is_null(x)}; });
    compare_map<bit, bit, bit>(L"and_",
                               [](bit x, bit y) { return bit{static_cast<unsigned char>(x.value & y.value)}; });
}

void register_conversions() {
    compare_map<double, int>(L"double", [](int x) { return static_cast<double>(x); });
    compare_map<double, bigint>(L"double", [](bigint x) { return static_cast<double>(x); });
    compare_map<bigint, int>(L"bigint", [](int x) { return bigint{x}; });
    compare_map<bigint, double>(
        L"bigint",
        [](double x) {
            const bool fits = x >= -0x1p63 && x < 0x1p63;
            return fits ? static_cast<bigint>(x) : datatraits<bigint>::null;
        },
        whole_result::may_be_null);
    compare_map<int, bigint>(
        L"long", [](bigint x) { return static_cast<int>(x) == x ? static_cast<int>(x) : datatraits<int>::null; },
        whole_result::may_be_null);
}

void register_hashes() {
    compare_map<unsigned, int>(L"hash", [](int x) { return atom_hash(x); });
    compare_map<unsigned, bigint>(L"hash", [](bigint x) { return atom_hash(x); });
    const auto rehash = kernel<unary_func>(primitive::klassMap, L"rehash", {col_of<int>()});
    page_of<unsigned>& hashes = page<unsigned>(false);
    const page_of<int>& keys = page<int>(false);
    compare(
        "map_rehash_long", [=, &hashes, &keys] { rehash(rows, out(hashes), in(keys), nullptr); },
        [to = hashes.data(), x = keys.data()] {
            for (unsigned i = 0; i < rows; ++i) to[i] = hash_combine(to[i], atom_hash(x[i]));
        });
}

template <class T>
void register_fetch() {
    const auto fetch = kernel<binary_func>(primitive::klassMap, L"fetch", {col_of<unsigned>(), col_of<T>()});
    page_of<T>& result = page<T>(false);
    const page_of<T>& source = page<T>(false);
    const page_of<unsigned>& index = numbers_below(rows);
    compare(
        "map_fetch_" + narrow(std::wstring(datatraits<T>::name)),
        [=, &result, &source, &index] { fetch(rows, out(result), in(index), in(source, whole), nullptr); },
        [to = result.data(), from = source.data(), at = index.data()] {
            for (unsigned i = 0; i < rows; ++i) to[i] = from[at[i]];
        });
}

void register_dates() {
    compare_map<int, date>(L"year", [](date d) { return d.civil().year; });
    compare_map<int, date>(L"month", [](date d) { return d.civil().month; });
    compare_map<int, datetime>(L"month", [](datetime t) { return t.day().civil().month; });
    compare_map<int, datetime>(L"hour", [](datetime t) {
        return static_cast<int>(t.value % static_cast<unsigned long long>(ticks_per_day) /
                                static_cast<unsigned long long>(ticks_per_hour));
    });
    compare_map<date, date>(
        L"truncmonth",
        [](date d) {
            const auto c = d.civil();
            return date{static_cast<unsigned>(calendar::days(c.year, c.month, 1))};
        },
        whole_result::may_be_null);
    compare_map<date, date, int>(
        L"addday",
        [](date d, int days) {
            const long long sum = static_cast<long long>(d.value) + days;
            return sum >= 0 && sum < 1LL << 31 ? date{static_cast<unsigned>(sum)} : datatraits<date>::null;
        },
        whole_result::may_be_null);
    compare_map<int, date, date>(
        L"diffday",
        [](date a, date b) {
            const long long days = static_cast<long long>(b.value) - a.value;
            return static_cast<int>(days) == days ? static_cast<int>(days) : datatraits<int>::null;
        },
        whole_result::may_be_null);
}

void register_selects() {
    const page_of<int>& values = page<int>(true);
    page_of<unsigned>& positions = page<unsigned>(false);
    const auto lt = kernel<binary_func>(primitive::klassSelect, L"lt", {col_of<int>(), val_of<int>()});
    const unsigned* const half = selection().data();
    const auto count = static_cast<unsigned>(selection().size());
    for (const int percent : {10, 50, 90}) {
        const auto limit = std::make_shared<page_of<int>>(1, percent * 10);
        const auto plain = [to = positions.data(), x = values.data(), y = percent * 10](unsigned n, auto row) {
            unsigned k = 0;
            for (unsigned i = 0; i < n; ++i) {
                to[k] = row(i);
                k += !is_null(x[row(i)]) & (x[row(i)] < y);
            }
            benchmark::DoNotOptimize(k);
        };
        const std::string name = "sel_lt_long_val_" + std::to_string(percent);
        compare(
            name, [=, &positions, &values] { lt(rows, out(positions), in(values), in(*limit), nullptr); },
            [=] { plain(rows, [](unsigned i) { return i; }); });
        if (percent != 50) continue;
        compare(
            name + "_selected", [=, &positions, &values] { lt(count, out(positions), in(values), in(*limit), half); },
            [=] { plain(count, [=](unsigned k) { return half[k]; }); }, count);
    }
    const auto isnull = kernel<unary_func>(primitive::klassSelect, L"isnull", {col_of<int>()});
    compare(
        "sel_isnull_long", [=, &positions, &values] { isnull(rows, out(positions), in(values), nullptr); },
        [to = positions.data(), x = values.data()] {
            unsigned k = 0;
            for (unsigned i = 0; i < rows; ++i) {
                to[k] = i;
                k += is_null(x[i]);
            }
            benchmark::DoNotOptimize(k);
        });
    const page_of<bit>& bits = page<bit>(false);
    const auto copy = kernel<unary_func>(primitive::klassSelect, L"copy", {col_of<bit>()});
    compare(
        "sel_copy_bit", [=, &positions, &bits] { copy(rows, out(positions), in(bits), nullptr); },
        [to = positions.data(), x = bits.data()] {
            unsigned k = 0;
            for (unsigned i = 0; i < rows; ++i) {
                to[k] = i;
                k += x[i].value & 1;
            }
            benchmark::DoNotOptimize(k);
        });
}

/// An aggregate of a column by groups; `fold` brings one value into an accumulator.
template <class R, class A, class Fold>
void compare_aggregate(const std::wstring& operation, Fold fold) {
    const auto f = kernel<binary_func>(primitive::klassAggregate, operation, {col_of<A>(), col_of<unsigned>()});
    page_of<R>& accumulators = page<R>(false);
    const std::string name = "agg_" + narrow(operation) + "_" + narrow(std::wstring(datatraits<A>::name));
    for (const bool nulls : {true, false}) {
        const page_of<A>& values = page<A>(nulls);
        for (const auto& [label, groups] : {std::pair{"_one_group", 1U}, {"_few_groups", 6U}, {"_many_groups", rows}}) {
            const page_of<unsigned>& index = numbers_below(groups);
            const unsigned char flags = groups == 1 ? column_flags::constant : 0;
            compare(
                name + label + (nulls ? "_nulls" : "_whole"),
                [=, &accumulators, &values, &index] {
                    f(rows, out(accumulators), in(values, nulls ? 0 : whole), in(index, flags), nullptr);
                },
                [=, to = accumulators.data(), x = values.data(), g = index.data(), one = groups == 1] {
                    for (unsigned i = 0; i < rows; ++i) {
                        R& accumulator = to[one ? 0 : g[i]];
                        if (!nulls || !is_null(x[i])) accumulator = fold(accumulator, x[i]);
                    }
                });
        }
    }
}

void register_aggregates() {
    compare_aggregate<double, double>(L"sum", [](double a, double x) { return (is_null(a) ? 0 : a) + x; });
    compare_aggregate<bigint, int>(L"sum", [](bigint a, int x) { return (is_null(a) ? 0 : a) + x; });
    compare_aggregate<int, int>(L"max", [](int a, int x) { return std::max(a, x); });
    compare_aggregate<bigint, int>(L"count", [](bigint a, int) { return a + 1; });
    const auto check =
        kernel<ternary_func>(primitive::klassAggregate, L"check", {col_of<int>(), col_of<int>(), col_of<unsigned>()});
    page_of<bit>& marks = page<bit>(false);
    const page_of<int>& keys = page<int>(false);
    const page_of<int>& table = page<int>(false);
    const page_of<unsigned>& index = numbers_below(rows);
    compare(
        "agg_check_long",
        [=, &marks, &keys, &table, &index] { check(rows, out(marks), in(keys), in(table), in(index), nullptr); },
        [to = marks.data(), x = keys.data(), y = table.data(), g = index.data()] {
            for (unsigned i = 0; i < rows; ++i) to[i] = {x[i] != y[g[i]]};
        });
}

/// A page of words, of which there are a hundred, in a heap; and for the plain loops as such a loop would have them,
/// one behind the other with their lengths before them.
struct words {
    const usrtype* type = varchar::usrtypeof(varchar::clob_precision, 1, L"binary");
    RefCntPtr<MemoryDataStream> stream = MakeRef<MemoryDataStream>();
    std::unique_ptr<usrheap> heap = type->heap(stream.get());
    std::vector<std::string> texts;
    std::vector<unsigned> tokens;
    std::string plain;
    std::vector<unsigned> offsets;

    words() {
        for (unsigned i = 0; i < rows; ++i) {
            texts.push_back("a word, number " + std::to_string(random_bits()() % 100) + " of many");
            const std::string& text = texts.back();
            tokens.push_back(static_cast<unsigned>(heap->put(usratom(type, text.data(), text.size()))));
            const auto length = static_cast<unsigned>(text.size());
            offsets.push_back(static_cast<unsigned>(plain.size()));
            plain.append(reinterpret_cast<const char*>(&length), sizeof length).append(text);
        }
    }
    std::string_view operator[](unsigned i) const {
        const char* const entry = plain.data() + offsets[i];
        unsigned length;
        std::memcpy(&length, entry, sizeof length);
        return {entry + sizeof length, length};
    }
    input_column input(unsigned count = rows) const { return {tokens.data(), heap.get(), sizeof(unsigned), count, 0}; }
};

void register_texts() {
    static const words left, right, needle;
    static page_of<bit>& truths = page<bit>(false);
    const primitive::argument text_col{L"usr4", L"col"}, text_val{L"usr4", L"val"};
    const auto eq = kernel<binary_func>(primitive::klassMap, L"eq", {text_col, text_col});
    compare(
        "map_eq_usr4", [=] { eq(rows, out(truths), left.input(), right.input(), nullptr); },
        [] {
            for (unsigned i = 0; i < rows; ++i) truths[i] = bit{left[i] == right[i]};
        });
    const auto contains = kernel<binary_func>(primitive::klassMap, L"contains", {text_col, text_val});
    compare(
        "map_contains_usr4_val", [=] { contains(rows, out(truths), left.input(), needle.input(1), nullptr); },
        [] {
            for (unsigned i = 0; i < rows; ++i) {
                const std::string_view text = left[i];
                truths[i] = bit{memmem(text.data(), text.size(), needle[0].data(), needle[0].size()) != nullptr};
            }
        });
    static page_of<unsigned>& hashes = page<unsigned>(false);
    const auto hash = kernel<unary_func>(primitive::klassMap, L"hash", {text_col});
    compare(
        "map_hash_usr4", [=] { hash(rows, out(hashes), left.input(), nullptr); },
        [] {
            for (unsigned i = 0; i < rows; ++i) {
                const std::string_view text = left[i];
                hashes[i] = hashfunc(text.data(), text.size());
            }
        });
}

void register_orders() {
    const auto sort = kernel<sort_func>(primitive::klassSort, L"asc", {col_of<unsigned>(), col_of<double>()});
    const page_of<double>& values = page<double>(false);
    static page_of<double> keys;
    static page_of<unsigned> index;
    static std::vector<std::pair<double, unsigned>> pairs;
    const auto by_key = [](const auto& a, const auto& b) { return a.first < b.first; };
    compare(
        "sort_asc_ulng_double",
        [=, &values] {
            keys = values;
            index.resize(rows);
            sort(rows, out(index), out(keys));
        },
        [=, &values] {
            pairs.resize(rows);
            for (unsigned i = 0; i < rows; ++i) pairs[i] = {values[i], i};
            std::sort(pairs.begin(), pairs.end(), by_key);
        });
    const auto merge = kernel<merge_func>(primitive::klassMerge, L"asc", {{L"long", L"col"}});
    static page_of<int> left = page<int>(false), right = page<int>(false), merged(2 * rows);
    static std::vector<unsigned char> steps(rows / 4);
    std::sort(left.begin(), left.end());
    std::sort(right.begin(), right.end());
    compare(
        "merge_asc_long",
        [=] {
            merge(2 * rows, {steps.data(), nullptr, 1, rows / 4, nullptr}, in(left), in(right));
        },
        [] { std::merge(left.begin(), left.end(), right.begin(), right.end(), merged.begin()); }, 2 * rows);
}

/// Four sorted runs with their row numbers to one.
void register_multimerge() {
    constexpr unsigned runs = 4;
    const auto merge = kernel<multimerge_func>(primitive::klassMultimerge, L"asc", {col_of<unsigned>(), col_of<int>()});
    static page_of<int> keys[runs];
    static page_of<unsigned> indexes[runs];
    for (unsigned r = 0; r < runs; ++r) {
        keys[r] = page<int>(false);
        std::sort(keys[r].begin(), keys[r].end());
        indexes[r] = page<unsigned>(false);
    }
    static page_of<int> merged_keys(runs * rows);
    static page_of<unsigned> merged(runs * rows);
    // A merge ends with the first run that does.
    const auto next_run = [](const unsigned* at) {
        unsigned least = 0;
        for (unsigned r = 1; r < runs; ++r) {
            if (keys[r][at[r]] < keys[least][at[least]]) least = r;
        }
        return least;
    };
    unsigned values = 0;
    for (unsigned at[runs] = {}; *std::max_element(at, at + runs) < rows; ++values) ++at[next_run(at)];
    compare(
        "multimerge_asc_ulng_long",
        [=] {
            unsigned positions[runs] = {};
            unsigned ends[runs];
            const void* key_data[runs + 1] = {};
            const void* index_data[runs] = {};
            for (unsigned r = 0; r < runs; ++r) {
                ends[r] = rows;
                key_data[r] = keys[r].data();
                index_data[r] = indexes[r].data();
            }
            merge(runs * rows, out(merged), out(merged_keys), positions, ends, nullptr, key_data, index_data);
        },
        [=] {
            unsigned at[runs] = {};
            for (unsigned i = 0; i < values; ++i) {
                const unsigned r = next_run(at);
                merged_keys[i] = keys[r][at[r]];
                merged[i] = indexes[r][at[r]++];
            }
        },
        values);
}

/// Numbers of 7 and of 12 bits to words.
void register_packing() {
    for (const unsigned bits : {7u, 12u}) {
        const auto pack = pack_func_ulng_col_ulng_col(bits);
        const page_of<unsigned>& numbers = numbers_below(1u << bits);
        static page_of<unsigned>& packed = page<unsigned>(false);
        compare(
            "pack_" + std::to_string(bits),
            [=, &numbers] { pack(static_cast<unsigned short>(rows), packed.data(), numbers.data()); },
            [=, &numbers] {
                uint64_t word = 0;
                unsigned filled = 0;
                unsigned* to = packed.data();
                for (unsigned i = 0; i < rows; ++i) {
                    word |= static_cast<uint64_t>(numbers[i]) << filled;
                    filled += bits;
                    if (filled >= 32) {
                        *to++ = static_cast<unsigned>(word);
                        word >>= 32;
                        filled -= 32;
                    }
                }
            });
    }
}

/// Row numbers of a virtual column.
void register_virtual() {
    const auto numbers = kernel<unary_func>(primitive::klassMap, L"ulng", {{L"ulng", L"vir"}});
    static page_of<unsigned>& result = page<unsigned>(false);
    compare(
        "map_ulng_ulng_vir",
        [=] {
            numbers(rows, out(result), {nullptr, nullptr, sizeof(unsigned), rows, 0}, nullptr);
        },
        [] {
            for (unsigned i = 0; i < rows; ++i) result[i] = i;
        });
}

/// Ten million random keys with their index, beside std::sort of pairs of them; `ratio` is over that.
void sort_many(benchmark::State& state, bool parallel) {
    constexpr unsigned count = 10000000;
    const auto sort = kernel<sort_func>(primitive::klassSort, L"asc", {col_of<unsigned>(), col_of<bigint>()});
    page_of<bigint> values(count);
    for (bigint& value : values) value = static_cast<bigint>(random_bits()());
    std::vector<std::pair<bigint, unsigned>> pairs(count);
    for (unsigned i = 0; i < count; ++i) pairs[i] = {values[i], i};
    const auto seconds = [](auto work) {
        const auto start = std::chrono::steady_clock::now();
        work();
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    };
    const double plain = seconds([&] { std::sort(pairs.begin(), pairs.end()); });
    page_of<unsigned> index(count);
    for (auto _ : state) {
        for (unsigned i = 0; i < count; ++i) index[i] = i;
        unsigned char flags = parallel ? column_flags::parallel_sort : 0;
        const double spent = seconds([&] {
            sort(count, out(index), {values.data(), nullptr, sizeof(bigint), count, &flags});
        });
        state.SetIterationTime(spent);
        state.counters["ns"] = spent / count * 1e9;
        state.counters["ratio"] = spent / plain;
    }
}

}  // namespace
}  // namespace qve

int main(int argc, char** argv) {
    qve::types_initialization();
    qve::define_primitives();
    qve::register_arithmetic();
    qve::register_comparisons();
    qve::register_conversions();
    qve::register_hashes();
    qve::register_fetch<double>();
    qve::register_fetch<int>();
    qve::register_dates();
    qve::register_selects();
    qve::register_aggregates();
    qve::register_texts();
    qve::register_orders();
    qve::register_multimerge();
    qve::register_packing();
    qve::register_virtual();
    for (const bool parallel : {false, true}) {
        benchmark::RegisterBenchmark(parallel ? "sort_10M_bigint/parallel" : "sort_10M_bigint/one_thread",
                                     [parallel](benchmark::State& state) { qve::sort_many(state, parallel); })
            ->Iterations(1)
            ->UseManualTime();
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
