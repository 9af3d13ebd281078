#include "primitives/regexp.h"
#include "primitives/text_function.h"

namespace qve {
namespace {

struct rcontains_function {
    static constexpr const wchar_t* name = L"rcontains";
    static constexpr text_kind kind = text_kind::truth;
    static long long apply(text_call& call) {
        const auto found = regexp::local().contains(*call.text[0], *call.text[1]);
        return found ? *found : text_call::null;
    }
};

const register_text_function<rcontains_function, for_each_pair<truth_of_two, usr_atoms>, modes2> registered;

}  // namespace

void define_rcontains() {}

}  // namespace qve
