#include "tests/primitives/test_column.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <stdexcept>

namespace qve::test {
namespace {

constexpr type_info types[] = {
    {L"bit", 1, false, false, false},      {L"tiny", 1, true, false, true},     {L"short", 2, true, false, true},
    {L"long", 4, true, false, true},       {L"bigint", 8, true, false, true},   {L"uchr", 1, false, false, false},
    {L"usht", 2, false, false, false},     {L"ulng", 4, false, false, false},   {L"oid", 8, false, false, false},
    {L"float", 4, true, true, false},      {L"double", 8, true, true, false},   {L"date", 4, false, false, false},
    {L"datetime", 8, false, false, false}, {L"duration", 8, true, false, true}, {L"usr1", 1, false, false, false},
    {L"usr2", 2, false, false, false},     {L"usr4", 4, false, false, false},   {L"usr8", 8, false, false, false},
};

uint64_t read_bits(const type_info& type, const void* at) {
    uint64_t bits = 0;
    std::memcpy(&bits, at, type.width);
    return bits;
}

}  // namespace

uint64_t null_bits(const type_info& type) {
    if (type.name == L"bit") return 128;
    if (type.name == L"float") return 0x7FC10000;
    if (type.name == L"double") return 0x7FF9000000000000;
    const uint64_t ones = ~0ULL >> (64 - 8 * type.width);
    return type.lowest_is_null ? uint64_t{1} << (8 * type.width - 1) : ones;
}

const type_info& type_info::of(std::wstring_view name) {
    for (const type_info& type : types) {
        if (type.name == name) return type;
    }
    throw std::invalid_argument("no such type");
}

cell read_cell(const type_info& type, const void* at) {
    const uint64_t bits = read_bits(type, at);
    if (bits == null_bits(type)) return {};
    if (type.name == L"float") return real_cell(std::bit_cast<float>(static_cast<uint32_t>(bits)));
    if (type.name == L"double") return real_cell(std::bit_cast<double>(bits));
    return wrapped(type, static_cast<__int128>(bits));
}

cell wrapped(const type_info& type, __int128 value) {
    const unsigned width = 8 * type.width;
    const uint64_t bits = static_cast<uint64_t>(value) & (~0ULL >> (64 - width));
    if (bits == null_bits(type)) return {};
    __int128 result = bits;
    if (type.is_signed && bits >> (width - 1)) result -= static_cast<__int128>(1) << width;
    return {false, false, 0, result};
}

cell real_cell(double value) {
    return {false, true, value, 0};
}
cell null_cell() {
    return {};
}

bool same(const cell& a, const cell& b) {
    if (a.null || b.null) return a.null && b.null;
    if (a.real != b.real) return false;
    if (!a.real) return a.i == b.i;
    return (std::isnan(a.d) && std::isnan(b.d)) || std::bit_cast<uint64_t>(a.d) == std::bit_cast<uint64_t>(b.d);
}

std::string text_of(const cell& value) {
    if (value.null) return "null";
    return value.real ? std::to_string(value.d) : std::to_string(static_cast<long long>(value.i));
}

test_column::test_column(std::wstring_view type, unsigned count, bool nulls, std::mt19937& random)
    : m_type(&type_info::of(type)), m_count(count), m_flags(nulls ? 0 : column_flags::not_null) {
    m_bytes.resize(static_cast<size_t>(count) * m_type->width);
    const uint64_t null = null_bits(*m_type);
    const uint64_t ones = ~0ULL >> (64 - 8 * m_type->width);
    const uint64_t special[] = {0, 1, 2, ones, ones - 1, ones >> 1, (ones >> 1) + 1, (ones >> 1) + 2, 7, 100};
    const double reals[] = {0.0,  -0.0, 0.5,   -0.5,     1.5,   2.5,      -2.5,      1e10,         -1e10, 3.25,
                            1e30, 1e-5, 127.0, -32768.5, 1e100, INFINITY, -INFINITY, std::nan(""), 2.0,   100.0};
    for (unsigned i = 0; i < count; ++i) {
        uint64_t bits;
        if (m_type->is_real) {
            const bool pick = random() % 2;
            const double value = pick ? reals[random() % std::size(reals)] : static_cast<int>(random()) / 65536.0;
            bits = m_type->width == 4 ? std::bit_cast<uint32_t>(static_cast<float>(value))
                                      : std::bit_cast<uint64_t>(value);
        } else if (m_type->name == L"bit") {
            bits = random() % 2;
        } else {
            const unsigned kind = random() % 4;
            bits = kind == 0 ? special[random() % std::size(special)]
                             : (uint64_t{random()} << 32 | random()) >> (kind == 1 ? 60 : 0);
            bits &= ones;
        }
        if (nulls && random() % 5 == 0) bits = null;
        if (!nulls && bits == null) bits = m_type->name == L"bit" ? 1 : 3;
        std::memcpy(m_bytes.data() + static_cast<size_t>(i) * m_type->width, &bits, m_type->width);
    }
    m_bytes.shrink_to_fit();
}

test_column test_column::row(unsigned i) const {
    test_column one;
    one.m_type = m_type;
    one.m_count = 1;
    one.m_flags = m_flags;
    one.m_bytes.assign(m_bytes.begin() + i * m_type->width, m_bytes.begin() + (i + 1) * m_type->width);
    return one;
}

test_column test_column::filled(std::wstring_view type, unsigned count, unsigned char value) {
    test_column column;
    column.m_type = &type_info::of(type);
    column.m_count = count;
    column.m_bytes.assign(static_cast<size_t>(count) * column.m_type->width, value);
    return column;
}

test_column test_column::small(std::wstring_view type, unsigned count, bool nulls, std::mt19937& random) {
    test_column column = filled(type, count, 0);
    column.m_flags = nulls ? 0 : column_flags::not_null;
    const type_info& info = *column.m_type;
    for (unsigned i = 0; i < count; ++i) {
        const int number = static_cast<int>(random() % 199) - (info.is_signed ? 99 : 0);
        uint64_t bits = static_cast<uint64_t>(static_cast<int64_t>(number));
        if (info.is_real) {
            bits = info.width == 4 ? std::bit_cast<uint32_t>(static_cast<float>(number))
                                   : std::bit_cast<uint64_t>(static_cast<double>(number));
        }
        if (nulls && random() % 5 == 0) bits = null_bits(info);
        std::memcpy(column.m_bytes.data() + static_cast<size_t>(i) * info.width, &bits, info.width);
    }
    return column;
}

test_column test_column::calendar(std::wstring_view type, unsigned count, bool nulls, std::mt19937& random) {
    constexpr uint64_t ticks_of_day = 864000000;
    test_column column = filled(type, count, 0);
    column.m_flags = nulls ? 0 : column_flags::not_null;
    const type_info& info = *column.m_type;
    const uint64_t special[] = {0, 1, 1721423, 1721424, 2299159, 2299160, 2451543, 2451544, 5373484};
    for (unsigned i = 0; i < count; ++i) {
        uint64_t bits = random() % 3 ? random() % 5373485 : special[random() % std::size(special)];
        if (info.width == 8) bits = bits * ticks_of_day + (random() % 3 ? random() % ticks_of_day : ticks_of_day - 1);
        if (nulls && random() % 5 == 0) bits = null_bits(info);
        std::memcpy(column.m_bytes.data() + static_cast<size_t>(i) * info.width, &bits, info.width);
    }
    return column;
}

test_column test_column::nulls(std::wstring_view type, unsigned count) {
    test_column column = filled(type, count, 0);
    const uint64_t bits = null_bits(*column.m_type);
    for (unsigned i = 0; i < count; ++i) {
        std::memcpy(column.m_bytes.data() + static_cast<size_t>(i) * column.m_type->width, &bits, column.m_type->width);
    }
    return column;
}

}  // namespace qve::test
