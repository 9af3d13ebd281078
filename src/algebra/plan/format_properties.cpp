#include "algebra/plan/format_properties.h"

#include "vql/syntax/FormatDataValue.h"

namespace qve {

std::wstring format_properties(const usrprops& properties) {
    std::wstring text;
    for (const auto& [key, value] : OrderedUserProperties(properties)) {
        if (!text.empty()) text += L' ';
        text += L"(" + FormatString(UsrPropKey_ToString(key)) + L" " + FormatString(value) + L")";
    }
    return L"(" + text + L")";
}

}  // namespace qve
