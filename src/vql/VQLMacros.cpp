#include "vql/VQLMacros.h"

#include <sstream>

#include "types/datetime.h"

namespace qve {

const VQLMacroMap VQLMacros::s_singleton = {
    {L"square", {L"(* %1 %1)", 1}},
    {L"radians", {L"(* %1 0.017453292519943295)", 1}},
    {L"degrees", {L"(* %1 57.295779513082323)", 1}},
    {L"pi", {L"3.1415926535897931", 0}},
    {L"average", {L"(/ (sum %1) (count %1))", 1}},
    {L"stdevp", {L"(sqrt (varp %1))", 1}},
    {L"stdev", {L"(sqrt (var %1))", 1}},
    {L"truncmillisecond", {L"(trunctime %1 10)", 1}},
    {L"truncsecond", {L"(trunctime %1 10000)", 1}},
    {L"truncminute", {L"(trunctime %1 600000)", 1}},
    {L"trunchour", {L"(trunctime %1 36000000)", 1}},
    {L"now", {L"#2009-10-20 10:53:07#", 0}},
    {L"today", {L"#2009-10-20#", 0}},
    {L"utc", {L"#2009-10-20 10:53:07#", 0}},
};

namespace {

template <class T>
std::wstring DateConstant(const T& value) {
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text << value;
    const std::string ascii = text.str();
    return L"#" + std::wstring(ascii.begin(), ascii.end()) + L"#";
}

}  // namespace

VQLMacroMap GetVQLMacros() {
    VQLMacroMap macros = VQLMacros::s_singleton;
    const datetime now = datetime::now();
    macros[L"now"].text = DateConstant(now);
    macros[L"today"].text = DateConstant(now.day());
    macros[L"utc"].text = DateConstant(datetime::utc());
    return macros;
}

}  // namespace qve
