#include "primitives/text_function.h"

namespace qve {
namespace {

struct find2_function {
    static constexpr const wchar_t* name = L"find2";
    static constexpr text_kind kind = text_kind::integer;
    static long long apply(text_call& call) { return call.order->find(*call.text[0], *call.text[1], 1); }
};

const register_text_function<find2_function, for_each_pair<integer_of_two, usr_atoms>, modes2> registered;

}  // namespace

void define_find2() {}

}  // namespace qve
