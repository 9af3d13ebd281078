#pragma once

#include <array>
#include <memory>
#include <span>
#include <vector>

#include "primitives/primitive_func.h"
#include "types/input_column.h"
#include "types/output_column.h"

namespace qve {

/// One line of a table of kernels: the function, its result type, and type and storage mode of up to three arguments.
template <class F>
struct kernel_entry {
    F function;
    const wchar_t* result;
    std::array<const wchar_t*, 3> types;
    std::array<const wchar_t*, 3> storages;
};

/// Owns the primitives of one file of kernels and enters them into the directory, in the order of the table.
/// Objects of this class are static; they are built before main and stay to the end.
class registration {
public:
    template <class F>
    registration(const wchar_t* klass, const wchar_t* name, std::span<const kernel_entry<F>> entries) {
        add(klass, name, entries);
    }
    /// Further kernels of the same file.
    template <class F>
    void add(const wchar_t* klass, const wchar_t* name, std::span<const kernel_entry<F>> entries);

    registration() = default;
    registration(const registration&) = delete;
    registration& operator=(const registration&) = delete;

private:
    std::vector<std::unique_ptr<primitive>> m_primitives;
};

}  // namespace qve
