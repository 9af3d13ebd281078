#include "primitives/text_function.h"

namespace qve {
namespace {

struct ltrim_function {
    static constexpr const wchar_t* name = L"ltrim";
    static constexpr text_kind kind = text_kind::text;
    static long long apply(text_call& call) {
        call.order->ltrim(*call.text[0], call.result);
        return 0;
    }
};

const register_text_function<ltrim_function, for_each_atom<text_of_text, usr_atoms>, modes1> registered;

}  // namespace

void define_ltrim() {}

}  // namespace qve
