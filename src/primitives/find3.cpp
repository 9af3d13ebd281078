#include "primitives/text_part.h"

namespace qve {
namespace {

struct find3_function {
    static constexpr const wchar_t* name = L"find3";
    static constexpr text_kind kind = text_kind::integer;
    static long long apply(text_call& call) {
        return call.order->find(*call.text[0], *call.text[1], within_int(call.number));
    }
};

template <class A, class B, class Number>
using find3_sig = sig<int, A, B, Number>;

const register_text_function<find3_function, for_each_triple<find3_sig, usr_atoms, usr_atoms, number_atoms>, modes3>
    registered;

}  // namespace

void define_find3() {}

}  // namespace qve
