#include <algorithm>
#include <string>

#include "primitives/date_parts.h"
#include "primitives/locale_names.h"
#include "primitives/text_function.h"
#include "system/UnicodeUnits.h"
#include "types/usrtype.h"

namespace qve {
namespace {

struct monthname_function {
    static constexpr const wchar_t* name = L"monthname";
    static constexpr text_kind kind = text_kind::text;
    static long long apply(text_call& call) {
        const usrtype* const type = call.result.type();
        const int month = civil(static_cast<unsigned>(std::min<long long>(call.number, last_day))).month;
        std::string units;
        Unicode::AppendUnits(units, locale_names::of(type).months[static_cast<size_t>(month - 1)],
                             static_cast<unsigned>(type->scale()));
        call.result.assign(type, units.data(), units.size());
        return 0;
    }
};

const register_text_function<monthname_function, signatures<sig<usr4, date>, sig<usr4, datetime>>, modes1> registered;

}  // namespace

void define_monthname() {}

}  // namespace qve
