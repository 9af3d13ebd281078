#pragma once

#include <cstdint>

#include "types/input_column.h"
#include "types/output_column.h"

namespace qve {

/// True for the widths that tokens have.
constexpr bool is_token_width(uint64_t width) {
    return width == 1 || width == 2 || width == 4 || width == 8;
}

/// Reads tokens of any width from a column, or the one token of a constant. The all-ones null of each width reads as
/// the all-ones null of 64 bits.
class token_view {
public:
    token_view(const input_column& column, bool constant)
        : m_data(column.data), m_width(column.width), m_step(constant ? 0 : 1) {}

    unsigned long long operator[](unsigned row) const {
        const uint64_t i = static_cast<uint64_t>(row) * m_step;
        switch (m_width) {
            case 1:
                return widened(static_cast<const unsigned char*>(m_data)[i]);
            case 2:
                return widened(static_cast<const unsigned short*>(m_data)[i]);
            case 4:
                return widened(static_cast<const unsigned*>(m_data)[i]);
            default:
                return static_cast<const unsigned long long*>(m_data)[i];
        }
    }

private:
    template <class T>
    static unsigned long long widened(T token) {
        return token == static_cast<T>(~T(0)) ? ~0ULL : token;
    }

    const void* m_data;
    uint64_t m_width;
    unsigned m_step;
};

/// Writes tokens of any width. A token that does not fit the width becomes null.
class token_writer {
public:
    explicit token_writer(const output_column& column) : m_data(column.data), m_width(column.width) {}

    void put(unsigned row, unsigned long long token) const {
        switch (m_width) {
            case 1:
                return narrow<unsigned char>(row, token);
            case 2:
                return narrow<unsigned short>(row, token);
            case 4:
                return narrow<unsigned>(row, token);
            default:
                return narrow<unsigned long long>(row, token);
        }
    }

private:
    template <class T>
    void narrow(unsigned row, unsigned long long token) const {
        constexpr T null = static_cast<T>(~T(0));
        static_cast<T*>(m_data)[row] = token > null ? null : static_cast<T>(token);
    }

    void* m_data;
    uint64_t m_width;
};

}  // namespace qve
