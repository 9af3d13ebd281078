#include "primitives/text_function.h"
#include "primitives/text_part.h"

namespace qve {
namespace {

struct mid_function {
    static constexpr const wchar_t* name = L"mid";
    static constexpr text_kind kind = text_kind::text;
    static long long apply(text_call& call) {
        const usratom& text = *call.text[0];
        if (!is_count(call.number)) return text_call::null;
        const uint64_t begin = Unicode::Units::Offset(text.bytes(), unit_width(text), call.number);
        return keep_part(call, begin, text.length() - begin);
    }
};

const register_text_function<mid_function, text_and_number, modes2> registered;

}  // namespace

void define_mid() {}

}  // namespace qve
