#include "primitives/text_function.h"

namespace qve {
namespace {

struct rtrim_function {
    static constexpr const wchar_t* name = L"rtrim";
    static constexpr text_kind kind = text_kind::text;
    static long long apply(text_call& call) {
        call.order->rtrim(*call.text[0], call.result);
        return 0;
    }
};

const register_text_function<rtrim_function, for_each_atom<text_of_text, usr_atoms>, modes1> registered;

}  // namespace

void define_rtrim() {}

}  // namespace qve
