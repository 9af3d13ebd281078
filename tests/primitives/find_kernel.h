#pragma once

#include <gtest/gtest.h>

#include <string_view>
#include <vector>

#include "primitives/primitive_directory.h"
#include "primitives/primitive_func.h"
#include "types/input_column.h"
#include "types/output_column.h"

namespace qve::test {

/// The primitive of a family and operation over arguments; null and a failure when there is none.
inline primitive* find_primitive(const wchar_t* klass, std::wstring_view operation,
                                 const primitive::argument_list& arguments) {
    for (primitive* p : primitive::resolve(operation, arguments)) {
        if (p->klass() == klass) return p;
    }
    ADD_FAILURE() << "no such kernel";
    return nullptr;
}

template <class F>
F find_kernel(const wchar_t* klass, std::wstring_view operation, const primitive::argument_list& arguments) {
    return ResolvePrimitive<F>(find_primitive(klass, operation, arguments));
}

/// Views of vectors in plain memory.
template <class T>
input_column input_of(const std::vector<T>& values, unsigned char flags = 0) {
    return {values.data(), nullptr, sizeof(T), static_cast<unsigned>(values.size()), flags};
}
template <class T>
output_column output_of(std::vector<T>& values, unsigned char* flags = nullptr) {
    return {values.data(), nullptr, sizeof(T), static_cast<unsigned>(values.size()), flags};
}

}  // namespace qve::test
