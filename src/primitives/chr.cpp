#include <string>

#include "primitives/text_function.h"
#include "system/UnicodeUnits.h"
#include "system/unicode.h"
#include "types/usrtype.h"

namespace qve {
namespace {

struct chr_function {
    static constexpr const wchar_t* name = L"chr";
    static constexpr text_kind kind = text_kind::text;
    static long long apply(text_call& call) {
        // No character: beyond Unicode, and the halves of surrogate pairs.
        const bool character =
            call.number >= 0 && call.number <= 0x10FFFF && (call.number < 0xD800 || call.number > 0xDFFF);
        if (!character) return text_call::null;
        const std::string utf8 = narrow(std::wstring(1, static_cast<wchar_t>(call.number)));
        std::string units;
        Unicode::AppendUnits(units, utf8, static_cast<unsigned>(call.result.type()->scale()));
        call.result.assign(call.result.type(), units.data(), units.size());
        return 0;
    }
};

const register_text_function<chr_function, for_each_atom<text_of_text, number_atoms>, modes1> registered;

}  // namespace

void define_chr() {}

}  // namespace qve
