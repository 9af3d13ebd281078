#include "primitives/text_function.h"

namespace qve {
namespace {

struct contains_function {
    static constexpr const wchar_t* name = L"contains";
    static constexpr text_kind kind = text_kind::truth;
    static long long apply(text_call& call) { return call.order->contains(*call.text[0], *call.text[1]); }
};

const register_text_function<contains_function, for_each_pair<truth_of_two, usr_atoms>, modes2> registered;

}  // namespace

void define_contains() {}

}  // namespace qve
