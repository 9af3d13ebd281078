#include <string>

#include "primitives/text_function.h"
#include "system/UnicodeUnits.h"
#include "types/calendar.h"
#include "types/usrtype.h"

namespace qve {
namespace {

struct monthname_function {
    static constexpr const wchar_t* name = L"monthname";
    static constexpr text_kind kind = text_kind::text;
    static long long apply(text_call& call) {
        static constexpr std::string_view names[] = {"January",   "February", "March",    "April",
                                                     "May",       "June",     "July",     "August",
                                                     "September", "October",  "November", "December"};
        std::string units;
        Unicode::AppendUnits(units, names[calendar::civil(static_cast<int>(call.number)).month - 1],
                             static_cast<unsigned>(call.result.type()->scale()));
        call.result.assign(call.result.type(), units.data(), units.size());
        return 0;
    }
};

const register_text_function<monthname_function, signatures<sig<usr4, date>, sig<usr4, datetime>>, modes1> registered;

}  // namespace

void define_monthname() {}

}  // namespace qve
