#include "primitives/text_function.h"

namespace qve {
namespace {

struct trim_function {
    static constexpr const wchar_t* name = L"trim";
    static constexpr text_kind kind = text_kind::text;
    static long long apply(text_call& call) {
        call.order->trim(*call.text[0], call.result);
        return 0;
    }
};

const register_text_function<trim_function, for_each_atom<text_of_text, usr_atoms>, modes1> registered;

}  // namespace

void define_trim() {}

}  // namespace qve
