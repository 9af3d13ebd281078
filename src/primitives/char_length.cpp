#include "primitives/text_function.h"
#include "system/UnicodeUnits.h"
#include "types/usrtype.h"

namespace qve {
namespace {

struct char_length_function {
    static constexpr const wchar_t* name = L"char_length";
    static constexpr text_kind kind = text_kind::integer;
    static long long apply(text_call& call) {
        const usratom& text = *call.text[0];
        return static_cast<long long>(
            Unicode::Units::CharLength(text.bytes(), static_cast<unsigned>(text.type()->scale())));
    }
};

const register_text_function<char_length_function, for_each_atom<integer_of_text, usr_atoms>, modes1> registered;

}  // namespace

void define_char_length() {}

}  // namespace qve
