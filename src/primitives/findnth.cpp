#include "primitives/text_part.h"

namespace qve {
namespace {

struct findnth_function {
    static constexpr const wchar_t* name = L"findnth";
    static constexpr text_kind kind = text_kind::integer;
    static long long apply(text_call& call) {
        return call.order->findNth(*call.text[0], *call.text[1], within_int(call.number));
    }
};

template <class A, class B, class Number>
using findnth_sig = sig<int, A, B, Number>;

const register_text_function<findnth_function, for_each_triple<findnth_sig, usr_atoms, usr_atoms, number_atoms>, modes3>
    registered;

}  // namespace

void define_findnth() {}

}  // namespace qve
