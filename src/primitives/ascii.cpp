#include "primitives/text_function.h"
#include "system/UnicodeUnits.h"
#include "types/usrtype.h"

namespace qve {
namespace {

struct ascii_function {
    static constexpr const wchar_t* name = L"ascii";
    static constexpr text_kind kind = text_kind::integer;
    static long long apply(text_call& call) {
        const usratom& text = *call.text[0];
        return static_cast<long long>(Unicode::Units::First(text.bytes(), static_cast<unsigned>(text.type()->scale())));
    }
};

const register_text_function<ascii_function, for_each_atom<integer_of_text, usr_atoms>, modes1> registered;

}  // namespace

void define_ascii() {}

}  // namespace qve
