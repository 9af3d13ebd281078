// Every registered kernel that meets texts, or that looks at more than one row of its arguments, beside a reference
// that is evaluated row by row.

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cstring>
#include <numeric>
#include <set>

#include "primitives/define_primitives.h"
#include "primitives/primitive_directory.h"
#include "primitives/primitive_func.h"
#include "storage/stream/MemoryDataStream.h"
#include "system/unicode.h"
#include "tests/primitives/text_reference.h"
#include "types/usrheap.h"
#include "types/varchar.h"

namespace qve::test {
namespace {

constexpr unsigned seed = 4711;
constexpr unsigned rows = 13;

/// A vector of texts or of plain values; tokens of one byte have room for the few entries of its heap.
class mixed_column {
public:
    using value = text_or_cell;

    mixed_column(const std::wstring& type, const std::vector<value>& values)
        : m_type(&type_info::of(type)), m_text(type.starts_with(L"usr")) {
        if (m_text) {
            m_stream = MakeRef<MemoryDataStream>();
            const long long precision = m_type->width == 1 ? 63 : varchar::clob_precision;
            m_varchar = varchar::usrtypeof(precision, 1, L"binary");
            m_heap = m_varchar->heap(m_stream.get());
        }
        m_bytes.resize(values.size() * m_type->width);
        for (unsigned i = 0; i < values.size(); ++i) set(i, values[i]);
    }
    /// An output of nulls.
    mixed_column(const std::wstring& type, unsigned count)
        : mixed_column(type, std::vector<value>(count, null_of(type))) {}

    static value null_of(const std::wstring& type) {
        return type.starts_with(L"usr") ? value::of(characters()) : value::of(null_cell());
    }

    value operator[](unsigned i) const {
        const cell token = read_cell(*m_type, m_bytes.data() + i * m_type->width);
        if (!m_text) return value::of(token);
        if (token.null) return value::of(characters());
        const std::string_view bytes = m_heap->bytes(static_cast<unsigned long long>(token.i));
        return value::of(bytes.data() ? characters(from_utf8(std::string(bytes))) : characters());
    }
    input_column input(unsigned char flags = 0) const {
        return {m_bytes.data(), m_heap.get(), m_type->width, count(), flags};
    }
    output_column output() { return {m_bytes.data(), m_heap.get(), m_type->width, count(), &m_flags}; }
    unsigned char flags() const { return m_flags; }

private:
    unsigned count() const { return static_cast<unsigned>(m_bytes.size() / m_type->width); }
    void set(unsigned i, const value& v) {
        uint64_t bits = null_bits(*m_type);
        if (m_text && v.text) {
            const std::string utf8 = to_utf8(*v.text);
            bits = m_heap->put(usratom(m_varchar, utf8.data(), utf8.size()));
        } else if (!m_text && !v.number.null && m_type->name == L"float") {
            bits = std::bit_cast<uint32_t>(static_cast<float>(v.number.d));
        } else if (!m_text && !v.number.null) {
            bits = m_type->is_real ? std::bit_cast<uint64_t>(v.number.d) : static_cast<uint64_t>(v.number.i);
        }
        std::memcpy(m_bytes.data() + static_cast<size_t>(i) * m_type->width, &bits, m_type->width);
    }

    const type_info* m_type;
    bool m_text;
    const usrtype* m_varchar = nullptr;
    RefCntPtr<MemoryDataStream> m_stream;
    std::unique_ptr<usrheap> m_heap;
    std::vector<unsigned char> m_bytes;
    unsigned char m_flags = 0;
};

const std::u32string pool[] = {U"",   U"a",  U"A",   U"ab", U"ba",  U"b",          U" x ", U"\u00E9",
                               U"aa", U"12", U"3.7", U"-7", U"aab", U"2024-02-29", U"300", U"x"};
const double numbers[] = {0, 1, 2, 3, 5, 65, 100, -1, -2, 233, 8364};

class TextKernels : public testing::Test {
protected:
    static void SetUpTestSuite() { define_primitives(); }

    text_or_cell random_value(const std::wstring& type) {
        if (m_random() % 6 == 0) return mixed_column::null_of(type);
        if (type.starts_with(L"usr")) return text_or_cell::of(pool[m_random() % std::size(pool)]);
        const type_info& info = type_info::of(type);
        if (type == L"bit") return text_or_cell::of(cell{false, false, 0, m_random() % 2});
        while (true) {
            const double number = numbers[m_random() % std::size(numbers)];
            if (info.is_real) return text_or_cell::of(real_cell(number));
            const cell whole = wrapped(info, static_cast<__int128>(number));
            if (!whole.null && static_cast<double>(whole.i) == number) return text_or_cell::of(whole);
        }
    }
    std::vector<text_or_cell> random_values(const std::wstring& type, const std::wstring& mode, unsigned count = rows) {
        std::vector<text_or_cell> values;
        for (unsigned i = 0; i < (mode == L"val" ? 1 : count); ++i) values.push_back(random_value(type));
        return values;
    }
    static bool has_text(const primitive& p) {
        return p.result().starts_with(L"usr") ||
               std::any_of(p.arguments().begin(), p.arguments().end(),
                           [](const auto& argument) { return argument.first.starts_with(L"usr"); });
    }
    /// All rows, and some.
    std::vector<std::vector<unsigned>> selections() {
        std::vector<unsigned> all(rows), some;
        std::iota(all.begin(), all.end(), 0);
        for (const unsigned row : all) {
            if (m_random() % 2) some.push_back(row);
        }
        return {all, some};
    }
    std::vector<unsigned> random_groups(unsigned count, bool one) {
        std::vector<unsigned> groups(rows);
        for (unsigned& group : groups) group = one ? 0 : static_cast<unsigned>(m_random() % count);
        return groups;
    }

    std::mt19937 m_random{seed};
};

unsigned call(primitive* p, unsigned n, output_column out, const std::vector<input_column>& in, unsigned const* sel) {
    if (in.size() == 1) return ResolvePrimitive<unary_func>(p)(n, out, in[0], sel);
    if (in.size() == 2) return ResolvePrimitive<binary_func>(p)(n, out, in[0], in[1], sel);
    return ResolvePrimitive<ternary_func>(p)(n, out, in[0], in[1], in[2], sel);
}

TEST_F(TextKernels, MapsAndSelectsAgreeWithTheReference) {
    // Of dates and moments and their formats; what else looks at texts must be known to the reference.
    const std::set<std::wstring> tested_elsewhere = {L"dayname",  L"monthname",   L"parsedate",   L"bit",   L"datetime",
                                                     L"duration", L"to_datetime", L"to_duration", L"fetch", L"run",
                                                     L"rerun",    L"rehash",      L"iif"};
    unsigned tested = 0;
    for (const primitive* entry : primitive::directory().all()) {
        const bool select = entry->klass() == primitive::klassSelect;
        if ((!select && entry->klass() != primitive::klassMap) || !has_text(*entry)) continue;
        const std::wstring& operation = entry->operation();
        if (tested_elsewhere.contains(operation)) continue;
        primitive* p = const_cast<primitive*>(entry);
        const auto& types = p->arguments();
        const bool prints = operation == L"to_str" && !types[0].first.starts_with(L"usr");
        if (prints && (types[0].first.starts_with(L"date") || types[0].first == L"duration")) continue;
        const text_reference reference = text_reference_of(operation == L"to_str" && !prints ? L"usr4" : operation);
        ASSERT_TRUE(reference || prints) << narrow(p->name()) << " has no reference";
        ++tested;
        std::vector<std::vector<text_or_cell>> values;
        std::vector<mixed_column> columns;
        std::vector<input_column> inputs;
        for (const auto& [type, mode] : types) {
            values.push_back(random_values(type, mode));
            columns.emplace_back(type, values.back());
        }
        for (const mixed_column& column : columns) inputs.push_back(column.input());
        const auto expected = [&](unsigned row) {
            std::vector<text_or_cell> arguments;
            for (const auto& v : values) arguments.push_back(v.size() == 1 ? v[0] : v[row]);
            if (!prints) return reference(p->result(), arguments);
            return text_or_cell::of(printed(type_info::of(types[0].first), arguments[0].number));
        };
        for (const std::vector<unsigned>& sel : selections()) {
            const auto n = static_cast<unsigned>(sel.size());
            if (select) {
                std::vector<unsigned> found(n + 1, 77777), wanted;
                for (const unsigned row : sel) {
                    const text_or_cell holds = expected(row);
                    if (!holds.is_null() && holds.number.i == 1) wanted.push_back(row);
                }
                unsigned char flags = 0;
                const output_column positions{found.data(), nullptr, sizeof(unsigned), n, &flags};
                found.resize(call(p, n, positions, inputs, sel.data()));
                ASSERT_EQ(found, wanted) << narrow(p->name()) << " seed " << seed;
                continue;
            }
            mixed_column out(p->result(), rows);
            ASSERT_EQ(call(p, n, out.output(), inputs, n == rows ? nullptr : sel.data()), n) << narrow(p->name());
            bool nulls = false;
            for (const unsigned row : sel) {
                const text_or_cell got = out[row];
                nulls |= got.is_null();
                if (!same(got, expected(row))) {
                    std::string text = narrow(p->name()) + " of";
                    for (const auto& v : values) text += " " + text_of(v.size() == 1 ? v[0] : v[row]);
                    ADD_FAILURE() << text << " gives " << text_of(got) << " not " << text_of(expected(row));
                }
            }
            EXPECT_FALSE(nulls && (out.flags() & column_flags::not_null))
                << narrow(p->name()) << " calls a null a value";
        }
    }
    EXPECT_GT(tested, 4000U);
}

TEST_F(TextKernels, FetchesAgreeWithTheReference) {
    unsigned tested = 0;
    for (const primitive* entry : primitive::directory().all()) {
        if (entry->operation() != L"fetch") continue;
        ++tested;
        primitive* p = const_cast<primitive*>(entry);
        const auto& [index_type, index_mode] = p->arguments()[0];
        const auto& [type, mode] = p->arguments()[1];
        const std::vector<text_or_cell> source = random_values(type, L"col", 5);
        std::vector<text_or_cell> index;
        for (unsigned i = 0; i < (index_mode == L"val" ? 1 : rows); ++i) {
            const unsigned at = static_cast<unsigned>(m_random() % 7);
            index.push_back(text_or_cell::of(at == 6 ? null_cell() : cell{false, false, 0, at}));
        }
        const mixed_column from(type, source), at(index_type, index);
        for (const std::vector<unsigned>& sel : selections()) {
            mixed_column out(p->result(), rows);
            const auto n = static_cast<unsigned>(sel.size());
            ASSERT_EQ(call(p, n, out.output(), {at.input(), from.input()}, n == rows ? nullptr : sel.data()), n);
            for (const unsigned row : sel) {
                const cell& place = index[index.size() == 1 ? 0 : row].number;
                const bool outside = place.null || place.i >= 5;
                const text_or_cell expected = outside ? mixed_column::null_of(type) : source[place.i];
                EXPECT_TRUE(same(out[row], expected)) << narrow(p->name()) << " gives " << text_of(out[row]);
            }
        }
    }
    EXPECT_GT(tested, 60U);
}

TEST_F(TextKernels, RunsAgreeWithTheReference) {
    unsigned tested = 0;
    for (const primitive* entry : primitive::directory().all()) {
        const bool again = entry->operation() == L"rerun";
        if (!again && entry->operation() != L"run") continue;
        ++tested;
        primitive* p = const_cast<primitive*>(entry);
        const auto& [type, mode] = p->arguments()[0];
        std::vector<text_or_cell> values = random_values(type, L"col");
        for (unsigned i = 1; i < rows; ++i) {
            if (m_random() % 2) values[i] = values[i - 1];
        }
        const mixed_column column(type, values);
        for (const std::vector<unsigned>& sel : selections()) {
            std::vector<unsigned char> heads(rows);
            for (unsigned char& head : heads) head = m_random() % 2;
            std::vector<unsigned char> expected = heads;
            for (size_t k = 1; k < sel.size(); ++k) {
                const bool differs = !same(values[sel[k]], values[sel[k - 1]]);
                unsigned char& head = expected[sel[k]];
                head = static_cast<unsigned char>(differs || (again && head));
            }
            const output_column out{heads.data(), nullptr, 1, rows, nullptr};
            call(p, static_cast<unsigned>(sel.size()), out, {column.input()}, sel.data());
            EXPECT_EQ(heads, expected) << narrow(p->name());
        }
    }
    EXPECT_EQ(tested, 36U);
}

// The keys of rows beside those of their groups.
TEST_F(TextKernels, ChecksAgreeWithTheReference) {
    unsigned tested = 0;
    for (const primitive* entry : primitive::directory().all()) {
        const bool again = entry->operation() == L"recheck";
        if (!again && entry->operation() != L"check") continue;
        ++tested;
        primitive* p = const_cast<primitive*>(entry);
        const auto& arguments = p->arguments();
        const bool one = arguments[2].second == L"val";
        const std::vector<text_or_cell> keys = random_values(arguments[0].first, arguments[0].second);
        std::vector<text_or_cell> table = random_values(arguments[1].first, L"col", 4);
        for (unsigned g = 0; g < 4; g += 2) {
            const text_or_cell& key = keys[m_random() % keys.size()];
            if (arguments[0].first == arguments[1].first || key.is_text) table[g] = key;
        }
        const mixed_column of_rows(arguments[0].first, keys), of_groups(arguments[1].first, table);
        const std::vector<unsigned> groups = random_groups(4, one);
        const unsigned char flags = one ? column_flags::constant : 0;
        const input_column index{groups.data(), nullptr, sizeof(unsigned), one ? 1 : rows, flags};
        for (const std::vector<unsigned>& sel : selections()) {
            std::vector<unsigned char> marks(rows);
            for (unsigned char& mark : marks) mark = m_random() % 2;
            std::vector<unsigned char> expected = marks;
            for (const unsigned row : sel) {
                const bool differs = !same(keys[keys.size() == 1 ? 0 : row], table[groups[row]]);
                expected[row] = static_cast<unsigned char>(differs || (again && expected[row]));
            }
            call(p, static_cast<unsigned>(sel.size()), {marks.data(), nullptr, 1, rows, nullptr},
                 {of_rows.input(), of_groups.input(), index}, sel.data());
            EXPECT_EQ(marks, expected) << narrow(p->name());
        }
    }
    EXPECT_GT(tested, 200U);
}

TEST_F(TextKernels, AggregatesAgreeWithTheReference) {
    unsigned tested = 0;
    for (const primitive* entry : primitive::directory().all()) {
        if (entry->klass() != primitive::klassAggregate) continue;
        const std::wstring& operation = entry->operation();
        const bool conditional = operation == L"anyif";
        const bool keys = operation == L"check" || operation == L"recheck";
        if (keys || (!conditional && !entry->arguments()[0].first.starts_with(L"usr"))) continue;
        ++tested;
        primitive* p = const_cast<primitive*>(entry);
        const auto& arguments = p->arguments();
        const std::vector<text_or_cell> values = random_values(arguments[0].first, arguments[0].second);
        const std::vector<text_or_cell> conditions =
            conditional ? random_values(L"bit", arguments[1].second) : std::vector<text_or_cell>{};
        const mixed_column column(arguments[0].first, values), condition(L"bit", conditions);
        const bool one = arguments.back().second == L"val";
        const std::vector<unsigned> groups = random_groups(3, one);
        const unsigned char flags = one ? column_flags::constant : 0;
        const input_column index{groups.data(), nullptr, sizeof(unsigned), one ? 1 : rows, flags};
        for (const std::vector<unsigned>& sel : selections()) {
            std::vector<std::vector<text_or_cell>> members(3);
            for (const unsigned row : sel) {
                const text_or_cell& value = values[values.size() == 1 ? 0 : row];
                if (value.is_null()) continue;
                if (conditional) {
                    const cell& holds = conditions[conditions.size() == 1 ? 0 : row].number;
                    if (holds.null || holds.i != 1) continue;
                }
                members[groups[row]].push_back(value);
            }
            const bool counts = operation == L"count";
            mixed_column out(p->result(),
                             std::vector<text_or_cell>(3, counts ? text_or_cell::of(cell{false, false, 0, 0})
                                                                 : mixed_column::null_of(p->result())));
            std::vector<input_column> inputs{column.input()};
            if (conditional) inputs.push_back(condition.input());
            inputs.push_back(index);
            call(p, static_cast<unsigned>(sel.size()), out.output(), inputs, sel.data());
            for (unsigned g = 0; g < 3; ++g) {
                const auto& found = members[g];
                const text_or_cell got = out[g];
                const std::string where = narrow(p->name()) + " gives " + text_of(got);
                if (counts) {
                    EXPECT_EQ(static_cast<size_t>(got.number.i), found.size()) << where;
                } else if (found.empty()) {
                    EXPECT_TRUE(got.is_null()) << where;
                } else if (operation == L"collect") {
                    std::u32string joined = *found[0].text;
                    for (size_t i = 1; i < found.size(); ++i) joined += U", " + *found[i].text;
                    EXPECT_TRUE(same(got, text_or_cell::of(joined))) << where;
                } else if (operation == L"min" || operation == L"max") {
                    const auto less = [](const text_or_cell& a, const text_or_cell& b) { return a.text < b.text; };
                    const auto [least, greatest] = std::minmax_element(found.begin(), found.end(), less);
                    EXPECT_TRUE(same(got, operation == L"min" ? *least : *greatest)) << where;
                } else {
                    const auto is_it = [&](const text_or_cell& member) { return same(member, got); };
                    EXPECT_TRUE(std::any_of(found.begin(), found.end(), is_it)) << where;
                }
            }
        }
    }
    EXPECT_GT(tested, 200U);
}

}  // namespace
}  // namespace qve::test
