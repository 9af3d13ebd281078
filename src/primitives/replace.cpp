#include "primitives/text_function.h"

namespace qve {
namespace {

struct replace_function {
    static constexpr const wchar_t* name = L"replace";
    static constexpr text_kind kind = text_kind::text;
    static long long apply(text_call& call) {
        call.order->replace(call.result, *call.text[0], *call.text[1], *call.text[2]);
        return 0;
    }
};

const register_text_function<replace_function, for_each_triple<text_of_three, usr_atoms, usr_atoms, usr_atoms>, modes3>
    registered;

}  // namespace

void define_replace() {}

}  // namespace qve
