#include "types/complete_type.h"

#include <string_view>

#include "system/QuillonException.h"
#include "system/unicode.h"
#include "types/builtin.h"
#include "types/status.h"
#include "types/varchar.h"

namespace qve {
namespace {

struct synonym {
    std::wstring_view name;
    std::wstring_view type;
};

constexpr synonym synonyms[] = {
    {L"boolean", L"bit"},    {L"integer", L"bigint"}, {L"real", L"double"},
    {L"string", L"varchar"}, {L"text", L"varchar"},   {L"usr", L"varchar"},
};

std::wstring_view type_name(const usrprops& given) {
    for (const usrpropkey key : {usrpropkey::type, usrpropkey::builtin, usrpropkey::datatype}) {
        if (given.has(key)) return given.text(key);
    }
    return {};
}

usrprops text_type(const usrprops& given) {
    const std::wstring* collation = given.get(usrpropkey::collation);
    return varchar::propsof(given.number(usrpropkey::precision, varchar::clob_precision),
                            given.number(usrpropkey::scale, 1), collation ? collation->c_str() : nullptr);
}

}  // namespace

usrprops complete_type(const usrprops& given) {
    if (given.has(usrpropkey::factory)) return usrtype::resolve(given)->properties();
    std::wstring_view name = type_name(given);
    for (const auto& [synonym, type] : synonyms) {
        if (name == synonym) name = type;
    }
    if (name == L"varchar") return text_type(given);
    try {
        return builtin::primitive_props(name);
    } catch (const QVE_RangeError&) {  // its text does not say which name it was
        throw QVE_InvalidArgument(status::complete_type_name, "complete_type: unknown type \"" + narrow(name) + "\"");
    }
}

}  // namespace qve
