#include "primitives/registration.h"

#include "primitives/primitive_directory.h"

namespace qve {

template <class F>
void registration::add(const wchar_t* klass, const wchar_t* name, std::span<const kernel_entry<F>> entries) {
    for (const kernel_entry<F>& entry : entries) {
        primitive::argument_list arguments;
        for (size_t i = 0; i < entry.types.size() && entry.types[i]; ++i) {
            arguments.emplace_back(entry.types[i], entry.storages[i]);
        }
        m_primitives.push_back(
            std::make_unique<primitive_func<F>>(entry.function, klass, name, entry.result, std::move(arguments)));
        primitive::directory().define(m_primitives.back().get());
    }
}

template void registration::add(const wchar_t*, const wchar_t*, std::span<const kernel_entry<nullary_func>>);
template void registration::add(const wchar_t*, const wchar_t*, std::span<const kernel_entry<unary_func>>);
template void registration::add(const wchar_t*, const wchar_t*, std::span<const kernel_entry<binary_func>>);
template void registration::add(const wchar_t*, const wchar_t*, std::span<const kernel_entry<ternary_func>>);
template void registration::add(const wchar_t*, const wchar_t*, std::span<const kernel_entry<sort_func>>);
template void registration::add(const wchar_t*, const wchar_t*, std::span<const kernel_entry<merge_func>>);
template void registration::add(const wchar_t*, const wchar_t*, std::span<const kernel_entry<multimerge_func>>);

}  // namespace qve
