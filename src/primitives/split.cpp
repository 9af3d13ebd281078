#include "primitives/text_part.h"

namespace qve {
namespace {

struct split_function {
    static constexpr const wchar_t* name = L"split";
    static constexpr text_kind kind = text_kind::text;
    static long long apply(text_call& call) {
        call.order->split(call.result, *call.text[0], *call.text[1], within_int(call.number));
        return 0;
    }
};

const register_text_function<split_function, for_each_triple<text_of_three, usr_atoms, usr_atoms, number_atoms>, modes3>
    registered;

}  // namespace

void define_split() {}

}  // namespace qve
