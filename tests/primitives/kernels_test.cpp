#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <set>

#include "primitives/define_primitives.h"
#include "primitives/primitive_directory.h"
#include "primitives/primitive_func.h"
#include "primitives/vector_level.h"
#include "system/unicode.h"
#include "tests/primitives/kernel_reference.h"
#include "tests/primitives/text_reference.h"

namespace qve::test {
namespace {

constexpr unsigned seed = 20111;
constexpr unsigned rows = 83;

// Operations over texts and over more than one row, beyond those that text_reference_of knows; text_driven_test.cpp has
// them, and sort_test.cpp and text_kernels_test.cpp what no driven test does: orders, names, formats, random numbers.
const std::set<std::wstring> tested_elsewhere = {
    L"any",    L"anyif", L"check",   L"collect", L"count",     L"countstar", L"fetch",
    L"max",    L"min",   L"recheck", L"rerun",   L"run",       L"sum",       L"total",
    L"to_str", L"asc",   L"desc",    L"dayname", L"monthname", L"parsedate", L"random"};

// Calls a kernel of any number of arguments.
unsigned call(primitive* p, unsigned n, output_column out, const std::vector<input_column>& in, unsigned const* sel) {
    switch (in.size()) {
        case 1:
            return ResolvePrimitive<unary_func>(p)(n, out, in[0], sel);
        case 2:
            return ResolvePrimitive<binary_func>(p)(n, out, in[0], in[1], sel);
        default:
            return ResolvePrimitive<ternary_func>(p)(n, out, in[0], in[1], in[2], sel);
    }
}

struct selection {
    unsigned n;
    std::vector<unsigned> rows;  // empty and dense: all
    bool dense;
    unsigned const* data() const { return dense ? nullptr : rows.data(); }
    unsigned at(unsigned k) const { return dense ? k : rows[k]; }
};

std::vector<selection> selections(std::mt19937& random) {
    std::vector<selection> result;
    for (const unsigned n : {0U, 1U, rows}) result.push_back({n, {}, true});
    selection some{0, {}, false};
    for (unsigned i = 0; i < rows; ++i) {
        if (random() % 3) some.rows.push_back(i);
    }
    some.n = static_cast<unsigned>(some.rows.size());
    result.push_back(some);
    result.push_back({1, {rows - 1}, false});
    return result;
}

std::vector<vector_level> levels() {
    std::vector<vector_level> result;
    for (const vector_level level :
         {vector_level::scalar, vector_level::sse41, vector_level::avx2, vector_level::avx512}) {
        if (level <= supported_vector_level()) result.push_back(level);
    }
    return result;
}

class Kernels : public testing::Test {
protected:
    static void SetUpTestSuite() { define_primitives(); }
    ~Kernels() override { set_vector_level(supported_vector_level()); }

    std::mt19937 m_random{seed};
};

// The arguments of a primitive, each column of `rows` values or one.
struct arguments {
    std::vector<const type_info*> types;
    std::vector<test_column> columns;
    std::vector<std::wstring> modes;

    arguments(const primitive& p, bool nulls, std::mt19937& random) {
        const bool dates = date_reference_of(p.operation(), {}) != nullptr;
        for (const auto& [type, mode] : p.arguments()) {
            types.push_back(&type_info::of(type));
            const bool moment = dates && (type == L"date" || type == L"datetime");
            const test_column column =
                moment ? test_column::calendar(type, rows, nulls, random) : test_column(type, rows, nulls, random);
            columns.push_back(mode == L"val" ? column.row(random() % rows) : column);
            modes.push_back(mode);
        }
    }
    std::vector<input_column> inputs() const {
        std::vector<input_column> result;
        for (const test_column& column : columns) result.push_back(column.input());
        return result;
    }
    std::vector<cell> row(unsigned i) const {
        std::vector<cell> result;
        for (size_t a = 0; a < columns.size(); ++a) {
            if (modes[a] == L"vir") {
                result.push_back(wrapped(*types[a], i));
            } else {
                result.push_back(columns[a][modes[a] == L"val" ? 0 : i]);
            }
        }
        return result;
    }
};

std::string described(const primitive& p, const arguments& in, unsigned i) {
    std::string text = narrow(p.name()) + " row " + std::to_string(i) + ":";
    for (const cell& c : in.row(i)) text += " " + text_of(c);
    return text + " seed " + std::to_string(seed);
}

TEST_F(Kernels, EveryOperationIsTested) {
    std::set<std::wstring> missing;
    for (const primitive* p : primitive::directory().all()) {
        const std::wstring& operation = p->operation();
        if (tested_elsewhere.contains(operation) || text_reference_of(operation) || reference_of(operation, {}))
            continue;
        missing.insert(operation);
    }
    for (const std::wstring& name : missing) ADD_FAILURE() << narrow(name);
}

TEST_F(Kernels, MapsAgreeWithTheReferenceOnEveryLevel) {
    const auto selected = selections(m_random);
    unsigned tested = 0;
    for (const primitive* entry : primitive::directory().all()) {
        if (entry->klass() != primitive::klassMap) continue;
        primitive* p = const_cast<primitive*>(entry);
        const arguments nullable(*p, true, m_random);
        const row_reference reference = reference_of(p->operation(), nullable.types);
        if (!reference) continue;
        ++tested;
        const type_info& result = type_info::of(p->result());
        const arguments whole(*p, false, m_random);
        for (const arguments* in : {&nullable, &whole}) {
            for (const selection& sel : selected) {
                std::vector<unsigned char> first;
                for (const vector_level level : levels()) {
                    set_vector_level(level);
                    test_column out = test_column::filled(p->result(), rows, 0xA5);
                    const std::vector<unsigned char> before = out.bytes();
                    ASSERT_EQ(call(p, sel.n, out.output(), in->inputs(), sel.data()), sel.n) << narrow(p->name());
                    if (first.empty()) {
                        first = out.bytes();
                        bool nulls = false;
                        std::vector<bool> written(rows);
                        for (unsigned k = 0; k < sel.n; ++k) {
                            const unsigned i = sel.at(k);
                            written[i] = true;
                            const cell expected = reference(result, in->types, in->row(i));
                            nulls |= out[i].null;
                            ASSERT_TRUE(same(out[i], expected)) << described(*p, *in, i) << " gives " << text_of(out[i])
                                                                << " not " << text_of(expected);
                        }
                        for (unsigned i = 0; i < rows; ++i) {
                            if (written[i]) continue;
                            const auto at = i * result.width;
                            ASSERT_TRUE(std::equal(before.begin() + at, before.begin() + at + result.width,
                                                   out.bytes().begin() + at))
                                << narrow(p->name()) << " wrote row " << i << ", which was not selected";
                        }
                        if (out.flags() & column_flags::not_null) {
                            ASSERT_FALSE(nulls) << narrow(p->name()) << " calls a null a value";
                        } else {
                            const bool folds = p->operation() == L"rehash" || p->operation() == L"radixgrp";
                            ASSERT_TRUE(nulls || sel.n == 0 || in != &whole || folds)
                                << narrow(p->name()) << " forgets the flag";
                        }
                    } else {
                        ASSERT_EQ(first, out.bytes())
                            << narrow(p->name()) << " differs at level " << static_cast<int>(level) << " seed " << seed;
                    }
                }
            }
        }
    }
    EXPECT_GT(tested, 3000U);
}

TEST_F(Kernels, SelectsAgreeWithTheReferenceOnEveryLevel) {
    const auto selected = selections(m_random);
    unsigned tested = 0;
    for (const primitive* entry : primitive::directory().all()) {
        if (entry->klass() != primitive::klassSelect) continue;
        primitive* p = const_cast<primitive*>(entry);
        const arguments nullable(*p, true, m_random);
        const row_reference reference = reference_of(p->operation(), nullable.types);
        if (!reference) continue;
        ++tested;
        const arguments whole(*p, false, m_random);
        for (const arguments* in : {&nullable, &whole}) {
            for (const selection& sel : selected) {
                std::vector<unsigned> expected;
                for (unsigned k = 0; k < sel.n; ++k) {
                    const cell holds = reference(type_info::of(L"bit"), in->types, in->row(sel.at(k)));
                    if (!holds.null && holds.i == 1) expected.push_back(sel.at(k));
                }
                for (const vector_level level : levels()) {
                    set_vector_level(level);
                    std::vector<unsigned> out(sel.n + 1, 77777);
                    const output_column positions{out.data(), nullptr, sizeof(unsigned), sel.n, nullptr};
                    const unsigned count = call(p, sel.n, positions, in->inputs(), sel.data());
                    ASSERT_EQ(std::vector<unsigned>(out.begin(), out.begin() + count), expected)
                        << narrow(p->name()) << " level " << static_cast<int>(level) << " seed " << seed;
                    ASSERT_EQ(out.back(), 77777U) << narrow(p->name()) << " wrote beyond its output";
                    // Narrowing a selection in place.
                    std::vector<unsigned> in_place = sel.rows;
                    if (!sel.dense) {
                        const output_column same_place{in_place.data(), nullptr, sizeof(unsigned), sel.n, nullptr};
                        ASSERT_EQ(call(p, sel.n, same_place, in->inputs(), in_place.data()), count)
                            << narrow(p->name());
                        in_place.resize(count);
                        ASSERT_EQ(in_place, expected) << narrow(p->name());
                    }
                }
            }
        }
    }
    EXPECT_GT(tested, 1500U);
}

// Vector loops end where the vector does: at each length the levels must agree on every byte, also behind the end. Of
// selects only the positions count that they return.
TEST_F(Kernels, LevelsGiveTheSameBitsAtEveryLength) {
    // These call the C library for each row, at every level.
    const std::set<std::wstring> from_the_library = {L"acos", L"asin", L"atan", L"atan2", L"cos",   L"cot",   L"exp",
                                                     L"ln",   L"log",  L"sin",  L"tan",   L"power", L"round2"};
    constexpr unsigned longest = 70;
    constexpr unsigned room = longest + 8;
    std::vector<unsigned char> first(room * sizeof(uint64_t)), other(first.size());
    unsigned tested = 0;
    for (const primitive* entry : primitive::directory().all()) {
        const bool select = entry->klass() == primitive::klassSelect;
        if ((!select && entry->klass() != primitive::klassMap) || entry->arguments().empty()) continue;
        primitive* p = const_cast<primitive*>(entry);
        const arguments nullable(*p, true, m_random);
        if (from_the_library.contains(p->operation()) || !reference_of(p->operation(), nullable.types)) continue;
        ++tested;
        const arguments whole(*p, false, m_random);
        const unsigned width = select ? sizeof(unsigned) : type_info::of(p->result()).width;
        const auto result = [&](std::vector<unsigned char>& bytes, const std::vector<input_column>& in, unsigned n) {
            unsigned char flags = 0;
            std::memset(bytes.data(), 0xA5, room * width);
            const unsigned count = call(p, n, {bytes.data(), nullptr, width, room, &flags}, in, nullptr);
            return std::pair{count, flags};
        };
        const std::vector<input_column> inputs[] = {nullable.inputs(), whole.inputs()};
        for (unsigned n = 0; n <= longest; ++n) {
            // By turns, so that among the kernels of an operation each length comes with nulls and without.
            const std::vector<input_column>& in = inputs[(n + tested) % 2];
            set_vector_level(vector_level::scalar);
            const auto expected = result(first, in, n);
            for (const vector_level level : levels()) {
                if (level == vector_level::scalar) continue;
                set_vector_level(level);
                const auto got = result(other, in, n);
                const bool agrees = got == expected &&
                                    std::memcmp(other.data(), first.data(), (select ? got.first : room) * width) == 0;
                ASSERT_TRUE(agrees) << narrow(p->name()) << " of " << n << " rows at level " << static_cast<int>(level)
                                    << " seed " << seed;
            }
        }
    }
    EXPECT_GT(tested, 4000U);
}

// What a group's accumulator is after all its values, in order.
cell aggregated(const std::wstring& operation, const type_info& result, const std::vector<cell>& values) {
    cell sum = result.is_real ? real_cell(0) : wrapped(result, 0);
    cell best = null_cell();
    long long count = 0;
    for (const cell& value : values) {
        if (value.null) continue;
        ++count;
        if (result.is_real) {
            sum.d += value.d;
        } else {
            sum.i += value.i;
        }
        const auto below = [](const cell& x, const cell& y) {
            if (!x.real) return x.i < y.i;
            return x.d < y.d || (std::isnan(y.d) && !std::isnan(x.d));
        };
        if (best.null || (operation == L"min" ? below(value, best) : below(best, value))) best = value;
    }
    if (operation == L"count") return wrapped(result, count);
    if (operation == L"min" || operation == L"max") return best;
    if (operation == L"sum" && count == 0) return null_cell();
    return result.is_real ? sum : wrapped(result, sum.i);
}

bool close(const cell& a, const cell& b) {
    if (a.null || b.null || !a.real || same(a, b)) return same(a, b);
    return std::fabs(a.d - b.d) <= 1e-9 * std::max({1.0, std::fabs(a.d), std::fabs(b.d)}) ||
           (!std::isfinite(a.d) && !std::isfinite(b.d));
}

TEST_F(Kernels, AggregatesAgreeWithTheReferenceOnEveryLevel) {
    const auto selected = selections(m_random);
    unsigned tested = 0;
    for (const primitive* entry : primitive::directory().all()) {
        if (entry->klass() != primitive::klassAggregate) continue;
        const std::wstring& operation = entry->operation();
        const bool any = operation == L"any";
        if (operation != L"sum" && operation != L"total" && operation != L"count" && operation != L"min" &&
            operation != L"max" && !any) {
            continue;
        }
        if (entry->arguments()[0].first.starts_with(L"usr") && operation != L"count") continue;
        ++tested;
        primitive* p = const_cast<primitive*>(entry);
        const type_info& type = type_info::of(p->arguments()[0].first);
        const type_info& result = type_info::of(p->result());
        const bool constant = p->arguments()[0].second == L"val";
        for (const bool nulls : {true, false}) {
            for (const unsigned group_count : {1U, 3U, 70U}) {
                const bool one = group_count == 1 || p->arguments()[1].second == L"val";
                test_column values(type.name, rows, nulls, m_random);
                // Sums of extreme reals depend on their order; and an integer sum that wraps to null starts again.
                if ((operation == L"sum" || operation == L"total") && (type.is_real || type.width == 8)) {
                    values = test_column::small(type.name, rows, nulls, m_random);
                }
                if (constant) values = values.row(m_random() % rows);
                std::vector<unsigned> groups(rows);
                for (unsigned& group : groups) group = one ? 0 : m_random() % group_count;
                for (const selection& sel : selected) {
                    std::vector<std::vector<cell>> members(group_count);
                    for (unsigned k = 0; k < sel.n; ++k) {
                        members[groups[sel.at(k)]].push_back(values[constant ? 0 : sel.at(k)]);
                    }
                    std::vector<unsigned char> first;
                    for (const vector_level level : levels()) {
                        set_vector_level(level);
                        const bool starts_null = operation != L"total" && operation != L"count";
                        test_column out = starts_null ? test_column::nulls(p->result(), group_count)
                                                      : test_column::filled(p->result(), group_count, 0);
                        unsigned char flags = one ? column_flags::constant : 0;
                        const input_column group_index{groups.data(), nullptr, sizeof(unsigned), rows, flags};
                        call(p, sel.n, out.output(), {values.input(), group_index}, sel.data());
                        for (unsigned g = 0; g < group_count; ++g) {
                            if (any) {
                                const auto found = std::any_of(members[g].begin(), members[g].end(),
                                                               [&](const cell& c) { return same(c, out[g]); });
                                const bool none = std::all_of(members[g].begin(), members[g].end(),
                                                              [](const cell& c) { return c.null; });
                                ASSERT_TRUE(none ? out[g].null : found && !out[g].null) << narrow(p->name());
                                continue;
                            }
                            const cell expected = aggregated(operation, result, members[g]);
                            ASSERT_TRUE(close(out[g], expected))
                                << narrow(p->name()) << " group " << g << " of " << group_count << " gives "
                                << text_of(out[g]) << " not " << text_of(expected) << " seed " << seed;
                        }
                        if (!starts_null && sel.n) {
                            ASSERT_TRUE(out.flags() & column_flags::not_null);
                        }
                        if (first.empty()) first = out.bytes();
                        ASSERT_EQ(first, out.bytes()) << narrow(p->name()) << " level " << static_cast<int>(level);
                    }
                }
            }
        }
    }
    EXPECT_GT(tested, 200U);
}

}  // namespace
}  // namespace qve::test
