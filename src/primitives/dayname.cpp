#include <algorithm>
#include <string>

#include "primitives/date_parts.h"
#include "primitives/locale_names.h"
#include "primitives/text_function.h"
#include "system/UnicodeUnits.h"
#include "types/usrtype.h"

namespace qve {
namespace {

struct dayname_function {
    static constexpr const wchar_t* name = L"dayname";
    static constexpr text_kind kind = text_kind::text;
    static long long apply(text_call& call) {
        const usrtype* const type = call.result.type();
        const long long day = (std::min<long long>(call.number, last_day) + 2) % 7;
        std::string units;
        Unicode::AppendUnits(units, locale_names::of(type).days[static_cast<size_t>(day)],
                             static_cast<unsigned>(type->scale()));
        call.result.assign(type, units.data(), units.size());
        return 0;
    }
};

const register_text_function<dayname_function, signatures<sig<usr4, date>, sig<usr4, datetime>>, modes1> registered;

}  // namespace

void define_dayname() {}

}  // namespace qve
