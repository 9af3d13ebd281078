#include "primitives/primitive.h"

#include <mutex>
#include <unordered_map>

#include "primitives/primitive_directory.h"
#include "primitives/primitive_func.h"
#include "primitives/status.h"
#include "types/builtin.h"

namespace qve {

primitive::primitive(const wchar_t* klass, const wchar_t* name, const wchar_t* result)
    : primitive(klass, name, result, argument_list()) {}

primitive::primitive(const wchar_t* klass, const wchar_t* name, const wchar_t* result, const wchar_t* type1,
                     const wchar_t* storage1)
    : primitive(klass, name, result, argument_list{{type1, storage1}}) {}

primitive::primitive(const wchar_t* klass, const wchar_t* name, const wchar_t* result, const wchar_t* type1,
                     const wchar_t* storage1, const wchar_t* type2, const wchar_t* storage2)
    : primitive(klass, name, result, argument_list{{type1, storage1}, {type2, storage2}}) {}

primitive::primitive(const wchar_t* klass, const wchar_t* name, const wchar_t* result, const wchar_t* type1,
                     const wchar_t* storage1, const wchar_t* type2, const wchar_t* storage2, const wchar_t* type3,
                     const wchar_t* storage3)
    : primitive(klass, name, result, argument_list{{type1, storage1}, {type2, storage2}, {type3, storage3}}) {}

primitive::primitive(const wchar_t* klass, const wchar_t* name, const wchar_t* result, argument_list arguments)
    : m_klass(klass), m_operation(name), m_result(result), m_arguments(std::move(arguments)) {}

primitive::~primitive() = default;

const std::wstring& primitive::name() const {
    static std::mutex mutex;  // one for all: names are for people, and asked for rarely
    std::lock_guard lock(mutex);
    if (!m_name.empty()) return m_name;
    std::wstring name = m_klass + L'_' + m_operation;
    if (m_result != m_operation) name += L'_' + m_result;
    const bool aggregate = m_klass == klassAggregate;
    for (size_t i = 0; i < m_arguments.size(); ++i) {
        const auto& [type, storage] = m_arguments[i];
        const bool group = aggregate && i + 1 == m_arguments.size();
        name += L'_' + (group ? std::wstring(L"uidx") : type) + L'_' + storage;
    }
    m_name = std::move(name);
    return m_name;
}

primitive_directory& primitive::directory() {
    static primitive_directory directory;
    return directory;
}

std::vector<primitive*> primitive::resolve(std::wstring_view name, const argument_list& arguments) {
    return directory().resolve(name, arguments);
}

const usrprops& primitive::primitive_props(std::wstring_view type) {
    static const std::unordered_map<std::wstring_view, usrprops> table = [] {
        std::unordered_map<std::wstring_view, usrprops> result;
        for (const wchar_t* name : {L"bit", L"tiny", L"short", L"long", L"bigint", L"uchr", L"usht", L"ulng", L"oid",
                                    L"float", L"double", L"date", L"datetime", L"duration"}) {
            result.emplace(name, builtin::primitive_props(name));
        }
        return result;
    }();
    static const usrprops none;
    const auto found = table.find(type);
    return found == table.end() ? none : found->second;
}

void throw_resolve_primitive() {
    throw QVE_LogicError(status::ResolvePrimitive, "ResolvePrimitive");
}

}  // namespace qve
