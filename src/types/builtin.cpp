#include "types/builtin.h"

#include <array>
#include <memory>
#include <string>

#include "system/QuillonException.h"
#include "types/scalartype.h"
#include "types/status.h"
#include "types/typefactory.h"

namespace qve {
namespace {

// The name in the property `builtin`; without one the type cannot be told.
const std::wstring& name_of(const usrprops& properties, int status, const char* text) {
    const std::wstring* name = properties.get(usrpropkey::builtin);
    if (!name) throw QVE_RangeError(status, text);
    return *name;
}

usrprops atom_props(const std::wstring& name, const wchar_t* datatype, size_t size) {
    usrprops properties;
    properties.set(usrpropkey::type, name);
    properties.set(usrpropkey::factory, L"builtin");
    properties.set(usrpropkey::builtin, name);
    properties.set(usrpropkey::datatype, datatype);
    properties.set(usrpropkey::size, size);
    properties.set(usrpropkey::fixed, true);
    return properties;
}

template <class T>
std::unique_ptr<usrtype> make(const std::wstring& name, const wchar_t* datatype) {
    return std::make_unique<scalartype<T>>(atom_props(name, datatype, sizeof(T)));
}

// The type among Ts whose registered name this is.
template <class... Ts>
std::unique_ptr<usrtype> make_one_of(const std::wstring& name, const wchar_t* datatype) {
    std::unique_ptr<usrtype> made;
    (void)((datatraits<Ts>::name == name && (made = make<Ts>(name, datatype))) || ...);
    return made;
}

std::wstring name_type(const usrprops& properties) {
    return name_of(properties, status::builtin_name_type, "builtin::name_type type");
}
std::unique_ptr<usrtype> create_boolean(const usrprops& properties) {
    return make<bit>(name_of(properties, status::builtin_create_boolean, "builtin::create_boolean type"), L"boolean");
}
std::unique_ptr<usrtype> create_integer(const usrprops& properties) {
    return make_one_of<char, short, int, long long>(
        name_of(properties, status::builtin_create_integer, "builtin::create_integer type"), L"integer");
}
std::unique_ptr<usrtype> create_index(const usrprops& properties) {
    return make_one_of<unsigned char, unsigned short, unsigned int, unsigned long long>(
        name_of(properties, status::builtin_create_index, "builtin::create_index type"), L"index");
}
std::unique_ptr<usrtype> create_real(const usrprops& properties) {
    return make_one_of<float, double>(name_of(properties, status::builtin_create_real, "builtin::create_real type"),
                                      L"real");
}
std::unique_ptr<usrtype> create_date(const usrprops& properties) {
    return make<date>(name_of(properties, status::builtin_create_date, "builtin::create_date type"), L"date");
}
std::unique_ptr<usrtype> create_datetime(const usrprops& properties) {
    return make<datetime>(name_of(properties, status::builtin_create_datetime, "builtin::create_datetime type"),
                          L"datetime");
}
std::unique_ptr<usrtype> create_duration(const usrprops& properties) {
    return make<duration>(name_of(properties, status::builtin_create_duration, "builtin::create_duration type"),
                          L"duration");
}

// The naming asks the second factory too, so that an unknown name fails before a type is looked up.
std::wstring name_builtin(const usrprops& properties) {
    if (!properties.has(usrpropkey::builtin)) return name_type(properties);
    return builtin::builtin_factory().nametype(properties);
}
std::unique_ptr<usrtype> create_builtin(const usrprops& properties) {
    return builtin::builtin_factory().createtype(properties);
}

}  // namespace

void builtin::register_types() {
    usrtypefactory().define(L"builtin", name_builtin, create_builtin);
    typefactory& atoms = builtin_factory();
    atoms.define(L"bit", name_type, create_boolean);
    for (const wchar_t* name : {L"tiny", L"short", L"long", L"bigint"}) atoms.define(name, name_type, create_integer);
    for (const wchar_t* name : {L"uchr", L"usht", L"ulng", L"oid"}) atoms.define(name, name_type, create_index);
    for (const wchar_t* name : {L"float", L"double"}) atoms.define(name, name_type, create_real);
    atoms.define(L"date", name_type, create_date);
    atoms.define(L"datetime", name_type, create_datetime);
    atoms.define(L"duration", name_type, create_duration);
}

typefactory& builtin::builtin_factory() {
    static typefactory factory(usrpropkey::builtin);
    return factory;
}

const usrtype* builtin::primitive_type(std::wstring_view name) {
    usrprops properties;
    properties.set(usrpropkey::factory, L"builtin");
    properties.set(usrpropkey::builtin, name);
    return resolve(properties);
}

const usrprops& builtin::primitive_props(std::wstring_view name) {
    return primitive_type(name)->properties();
}

}  // namespace qve
