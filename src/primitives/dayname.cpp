#include <string>

#include "primitives/text_function.h"
#include "system/UnicodeUnits.h"
#include "types/calendar.h"
#include "types/usrtype.h"

namespace qve {
namespace {

struct dayname_function {
    static constexpr const wchar_t* name = L"dayname";
    static constexpr text_kind kind = text_kind::text;
    static long long apply(text_call& call) {
        static constexpr std::string_view names[] = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                                     "Thursday", "Friday", "Saturday"};
        std::string units;
        Unicode::AppendUnits(units, names[(call.number + 2) % 7], static_cast<unsigned>(call.result.type()->scale()));
        call.result.assign(call.result.type(), units.data(), units.size());
        return 0;
    }
};

const register_text_function<dayname_function, signatures<sig<usr4, date>, sig<usr4, datetime>>, modes1> registered;

}  // namespace

void define_dayname() {}

}  // namespace qve
