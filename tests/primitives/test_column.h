#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "types/input_column.h"
#include "types/output_column.h"

namespace qve::test {

/// A value of a plain type as the reference sees it: null, a real number, or an integer.
struct cell {
    bool null = true;
    bool real = false;
    double d = 0;
    __int128 i = 0;

    double number() const { return real ? d : static_cast<double>(i); }
};

/// What the reference knows of a plain type.
struct type_info {
    std::wstring_view name;
    unsigned width;
    bool is_signed;
    bool is_real;
    bool lowest_is_null;  ///< else all ones; of "bit" 128

    static const type_info& of(std::wstring_view name);  ///< by name; usr1 to usr8 read as plain unsigned numbers
};

cell read_cell(const type_info& type, const void* at);
/// The bits of the type's null.
uint64_t null_bits(const type_info& type);
/// The integer wrapped to the width of the type; a wrapped null is null.
cell wrapped(const type_info& type, __int128 value);
cell real_cell(double value);
cell null_cell();
/// The same value: both null, the same bits of a number, any NaN like any other.
bool same(const cell& a, const cell& b);
std::string text_of(const cell& value);

/// A vector of a type in memory of its own, placed so that an access beyond it is seen.
class test_column {
public:
    test_column() = default;
    /// Extremes, small numbers and random bits; with `nulls` also nulls.
    test_column(std::wstring_view type, unsigned count, bool nulls, std::mt19937& random);

    input_column input() const { return {m_bytes.data(), nullptr, m_type->width, m_count, m_flags}; }
    output_column output() { return {m_bytes.data(), nullptr, m_type->width, m_count, &m_flags}; }
    cell operator[](unsigned i) const { return read_cell(*m_type, m_bytes.data() + i * m_type->width); }
    /// A column of the one value in row `i`.
    test_column row(unsigned i) const;
    /// Numbers from -99 to 99, of an unsigned type from 0 to 198.
    static test_column small(std::wstring_view type, unsigned count, bool nulls, std::mt19937& random);
    /// Dates or moments of the years that have four digits.
    static test_column calendar(std::wstring_view type, unsigned count, bool nulls, std::mt19937& random);
    /// Every byte set to `value`.
    static test_column filled(std::wstring_view type, unsigned count, unsigned char value);
    static test_column nulls(std::wstring_view type, unsigned count);

    const std::vector<unsigned char>& bytes() const { return m_bytes; }
    unsigned char flags() const { return m_flags; }
    void set_flags(unsigned char flags) { m_flags = flags; }
    unsigned width() const { return m_type->width; }

private:
    const type_info* m_type = nullptr;
    unsigned m_count = 0;
    unsigned char m_flags = 0;
    std::vector<unsigned char> m_bytes;
};

}  // namespace qve::test
