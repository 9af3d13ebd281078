#include "primitives/primitive_directory.h"

#include <algorithm>

namespace qve {

std::wstring primitive_directory::signature(std::wstring_view name, const primitive::argument_list& arguments) {
    std::wstring key;
    key.reserve(64);
    key += name;
    for (const auto& [type, storage] : arguments) {
        key += L'_';
        key += type;
        key += L'_';
        key += storage;
    }
    return key;
}

void primitive_directory::define(primitive* p) {
    constexpr size_t expected = 16384;  // growing while all kernels register would cost more than registering them
    if (m_entries.empty()) m_entries.reserve(expected);
    m_entries[signature(p->operation(), p->arguments())].push_back(p);
    ++m_size;
}

std::vector<primitive*> primitive_directory::resolve(std::wstring_view name,
                                                     const primitive::argument_list& arguments) const {
    return resolve(signature(name, arguments));
}

std::vector<primitive*> primitive_directory::resolve(const std::wstring& signature) const {
    const auto found = m_entries.find(signature);
    return found == m_entries.end() ? std::vector<primitive*>() : found->second;
}

std::vector<const primitive*> primitive_directory::all() const {
    std::vector<const primitive*> result;
    result.reserve(m_size);
    for (const auto& [key, primitives] : m_entries) result.insert(result.end(), primitives.begin(), primitives.end());
    std::sort(result.begin(), result.end(),
              [](const primitive* a, const primitive* b) { return a->name() < b->name(); });
    return result;
}

}  // namespace qve
