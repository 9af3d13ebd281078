#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "types/datatraits.h"

namespace qve {

class usrtype;

/// One value of a type: the fixed-width form of a scalar, or the bytes of a heap value. Either owns its bytes or is a
/// view of bytes elsewhere ("borrowed"); copies of a view are views. A value type; one thread at a time.
class usratom {
public:
    /// A null of no type; only good to be assigned.
    usratom() = default;
    /// A null of `type`.
    explicit usratom(const usrtype* type) : m_type(type) {}
    /// See assign.
    usratom(const usrtype* type, const char* data, uint64_t length, bool borrow = false);
    usratom(const usratom& other);
    usratom(usratom&& other) noexcept;
    usratom& operator=(const usratom& other);
    usratom& operator=(usratom&& other) noexcept;

    /// The atom of a value, of the type builtin::usrtypeof<T>().
    explicit usratom(bit value);
    explicit usratom(char value);
    explicit usratom(short value);
    explicit usratom(int value);
    explicit usratom(long long value);
    explicit usratom(float value);
    explicit usratom(double value);
    explicit usratom(date value);
    explicit usratom(datetime value);
    explicit usratom(duration value);

    /// Takes `length` bytes at `data`; with `borrow` only refers to them, and they must outlive the atom and its
    /// copies. A null `data` makes a null. Bytes of the atom itself may be given.
    void assign(const usrtype* type, const char* data, uint64_t length, bool borrow = false);
    /// Makes this a null of `type`.
    void assign_null(const usrtype* type);
    /// Takes over the bytes of `buffer`, and gives the bytes owned up to now in exchange.
    void swap(const usrtype* type, std::vector<char>& buffer);

    const usrtype* type() const { return m_type; }
    /// The bytes; null for a null. Of an empty value it points at the atom itself. Valid until the atom changes.
    const char* data() const { return m_data; }
    /// In bytes.
    uint64_t length() const { return m_length; }
    /// The bytes as a view; empty for a null.
    std::string_view bytes() const { return {m_data, m_data ? static_cast<size_t>(m_length) : 0}; }

    /// True without data, and for the stored null of the type.
    bool isnull() const;

    /// Conversions by usrtype::cast, as "3.7" to 3; they convert, they do not reinterpret. Null where that has no
    /// answer.
    explicit operator bit() const;
    explicit operator char() const;
    explicit operator short() const;
    explicit operator int() const;
    explicit operator long long() const;
    explicit operator float() const;
    explicit operator double() const;
    explicit operator date() const;
    explicit operator datetime() const;
    explicit operator duration() const;

private:
    // Points at the bytes that a copy or move brought along.
    void adopt(const char* data, bool owned);
    bool owns() const { return m_data == reinterpret_cast<const char*>(this) || (m_data && m_data == m_bytes.data()); }

    const usrtype* m_type = nullptr;
    const char* m_data = nullptr;
    uint64_t m_length = 0;
    std::vector<char> m_bytes;
};

}  // namespace qve
