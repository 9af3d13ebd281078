#pragma once

#include <cstdint>

#include "types/input_column.h"

namespace qve {

/// A typed vector as kernels and types write it; passed by value. `flags` points at the flags byte of the owning
/// column, so that a kernel can report on its output.
struct output_column {
    void* data = nullptr;            ///< the first value
    usrheap* heap = nullptr;         ///< heap of the tokens; null for plain atoms
    uint64_t width = 0;              ///< bytes per value
    unsigned limit = 0;              ///< capacity in values
    unsigned char* flags = nullptr;  ///< column_flags of the owner; may be null

    template <class T>
    T* values() const {
        return static_cast<T*>(data);
    }
};

}  // namespace qve
