#pragma once

#include <cstdint>

namespace qve {

class usrheap;

/// Bits of the flags byte of a column view.
namespace column_flags {
inline constexpr unsigned char not_null = 1;       ///< the vector holds no null
inline constexpr unsigned char constant = 2;       ///< every value of the vector is the same
inline constexpr unsigned char parallel_sort = 4;  ///< on the key column of a sort: several threads may sort
}  // namespace column_flags

/// A typed vector as kernels and types read it; passed by value. Points into memory of the column's owner and is valid
/// as long as that says; for heap-stored values `data` holds tokens into `heap`.
struct input_column {
    const void* data = nullptr;     ///< the first value
    const usrheap* heap = nullptr;  ///< heap of the tokens; null for plain atoms
    uint64_t width = 0;             ///< bytes per value
    unsigned count = 0;             ///< values available from `data`
    unsigned char flags = 0;        ///< column_flags

    template <class T>
    const T* values() const {
        return static_cast<const T*>(data);
    }
};

}  // namespace qve
