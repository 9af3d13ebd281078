#include "primitives/text_function.h"

namespace qve {
namespace {

struct lower_function {
    static constexpr const wchar_t* name = L"lower";
    static constexpr text_kind kind = text_kind::text;
    static long long apply(text_call& call) {
        call.order->lower(*call.text[0], call.result);
        return 0;
    }
};

const register_text_function<lower_function, for_each_atom<text_of_text, usr_atoms>, modes1> registered;

}  // namespace

void define_lower() {}

}  // namespace qve
