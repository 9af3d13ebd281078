#include "server/Datatype.h"

#include <map>
#include <string_view>

#include "server/protocol/QVE_Value.h"
#include "server/status.h"
#include "system/QuillonException.h"
#include "system/unicode.h"

namespace qve::Server {
namespace {

const std::map<std::wstring_view, QVE_Type> s_builtinTypes{
    {L"tiny", QVE_TypeInt8},         {L"uchr", QVE_TypeUInt8},        {L"short", QVE_TypeInt16},
    {L"usht", QVE_TypeUInt16},       {L"long", QVE_TypeInt32},        {L"ulng", QVE_TypeUInt32},
    {L"bigint", QVE_TypeInt64},      {L"oid", QVE_TypeUInt64},        {L"float", QVE_TypeFloat},
    {L"double", QVE_TypeDouble},     {L"bit", QVE_TypeBit},           {L"date", QVE_TypeDate},
    {L"datetime", QVE_TypeDatetime}, {L"duration", QVE_TypeDuration},
};

}  // namespace

std::uint32_t GetDatatype(const usrprops& properties) {
    const std::wstring* datatype = properties.get(usrpropkey::datatype);
    if (!datatype) throw QVE_RangeError(status::GetDatatype_Datatype, "missing type information");
    if (*datatype == L"spatial") return QVE_TypeSpatial;
    if (*datatype == L"usr") return properties.text(usrpropkey::scale) == L"2" ? QVE_TypeText16 : QVE_TypeText8;
    const std::wstring* builtin = properties.get(usrpropkey::builtin);
    if (!builtin) throw QVE_RangeError(status::GetDatatype_Builtin, "missing type information");
    const auto found = s_builtinTypes.find(*builtin);
    return found == s_builtinTypes.end() ? std::uint32_t{0} : found->second;
}

std::string QuoteStringLiteral(const char16_t* text) {
    if (!text) return "NULL";
    std::string quoted = "\"";
    for (const char c : narrow(std::u16string_view(text))) {
        if (c == '"' || c == '\\') quoted += '\\';
        quoted += c;
    }
    return quoted + '"';
}

}  // namespace qve::Server
