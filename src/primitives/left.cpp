#include "primitives/text_function.h"
#include "primitives/text_part.h"

namespace qve {
namespace {

struct left_function {
    static constexpr const wchar_t* name = L"left";
    static constexpr text_kind kind = text_kind::text;
    static long long apply(text_call& call) {
        const usratom& text = *call.text[0];
        if (!is_count(call.number)) return text_call::null;
        return keep_part(call, 0, Unicode::Units::Offset(text.bytes(), unit_width(text), call.number));
    }
};

const register_text_function<left_function, text_and_number, modes2> registered;

}  // namespace

void define_left() {}

}  // namespace qve
