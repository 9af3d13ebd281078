#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "primitives/primitive.h"

namespace qve {

/// Finds primitives by operation and argument types. Filled while static objects are initialised and read-only from
/// then on, so that it needs no lock. The global one is primitive::directory().
class primitive_directory {
public:
    /// The key of an operation over arguments: the operation, then type and storage of each argument, joined by "_".
    /// It names neither family nor result.
    static std::wstring signature(std::wstring_view name, const primitive::argument_list& arguments);

    /// Appends a primitive under its signature. The primitive stays its owner's and must outlive the directory.
    void define(primitive* p);

    /// A copy of the list under a signature, in the order of registering; empty when there is none.
    std::vector<primitive*> resolve(std::wstring_view name, const primitive::argument_list& arguments) const;
    std::vector<primitive*> resolve(const std::wstring& signature) const;

    /// Every registered primitive, ordered by full name. For listings and tests.
    std::vector<const primitive*> all() const;
    /// How many are registered.
    size_t size() const { return m_size; }

private:
    std::unordered_map<std::wstring, std::vector<primitive*>> m_entries;
    size_t m_size = 0;
};

}  // namespace qve
