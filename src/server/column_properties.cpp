#include "server/column_properties.h"

#include <cstdlib>
#include <cwchar>
#include <map>

namespace qve::Server {
namespace {

enum class Form { text, int32, uint64 };

const std::map<usrpropkey, Form> s_exported{
    {usrpropkey::collation, Form::text},      {usrpropkey::compression, Form::text},
    {usrpropkey::family_name, Form::text},    {usrpropkey::format_string, Form::text},
    {usrpropkey::ordered, Form::text},        {usrpropkey::sort_sense, Form::text},
    {usrpropkey::sum_value, Form::text},      {usrpropkey::sum2_value, Form::text},
    {usrpropkey::scale, Form::int32},         {usrpropkey::spatial_primitive_flags, Form::int32},
    {usrpropkey::storagewidth, Form::int32},  {usrpropkey::comparable, Form::int32},
    {usrpropkey::ordinal, Form::int32},       {usrpropkey::size, Form::uint64},
    {usrpropkey::cardinality, Form::uint64},  {usrpropkey::count_value, Form::uint64},
    {usrpropkey::count_errors, Form::uint64}, {usrpropkey::first_error, Form::uint64},
    {usrpropkey::last_error, Form::uint64},   {usrpropkey::sort_position, Form::uint64},
};

QVE_InterredValue ToValue(Form form, const std::wstring& text) {
    switch (form) {
        case Form::int32:
            return QVE_InterredValue(static_cast<std::int32_t>(std::wcstol(text.c_str(), nullptr, 10)));
        case Form::uint64:
            return QVE_InterredValue(static_cast<std::uint64_t>(std::wcstoull(text.c_str(), nullptr, 10)));
        default:
            return QVE_InterredValue(text);
    }
}

}  // namespace

QVE_PropertyList ExportColumnProperties(const std::wstring& name, std::uint32_t datatype, const usrprops& properties) {
    QVE_PropertyList list;
    list.emplace_back(QVE_InterredValue(L"name"), QVE_InterredValue(name));
    list.emplace_back(QVE_InterredValue(L"type"), QVE_InterredValue(static_cast<std::int32_t>(datatype)));
    for (const auto& [key, value] : OrderedUserProperties(properties)) {
        const auto exported = s_exported.find(key);
        if (exported == s_exported.end()) continue;
        list.emplace_back(QVE_InterredValue(UsrPropKey_ToString(key)), ToValue(exported->second, value));
    }
    return list;
}

}  // namespace qve::Server
