#include <string>

#include "primitives/text_function.h"
#include "system/UnicodeUnits.h"
#include "types/usrtype.h"

namespace qve {
namespace {

struct space_function {
    static constexpr const wchar_t* name = L"space";
    static constexpr text_kind kind = text_kind::text;
    static long long apply(text_call& call) {
        constexpr long long longest = 1 << 20;
        if (call.number < 0 || call.number > longest) return text_call::null;
        std::string units;
        Unicode::AppendUnits(units, std::string(static_cast<size_t>(call.number), ' '),
                             static_cast<unsigned>(call.result.type()->scale()));
        call.result.assign(call.result.type(), units.data(), units.size());
        return 0;
    }
};

const register_text_function<space_function, for_each_atom<text_of_text, number_atoms>, modes1> registered;

}  // namespace

void define_space() {}

}  // namespace qve
