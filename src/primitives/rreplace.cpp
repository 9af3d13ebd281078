#include "primitives/regexp.h"
#include "primitives/text_function.h"
#include "types/text_argument.h"

namespace qve {
namespace {

struct rreplace_function {
    static constexpr const wchar_t* name = L"rreplace";
    static constexpr text_kind kind = text_kind::text;
    static long long apply(text_call& call) {
        const auto replaced = regexp::local().replace(*call.text[0], *call.text[1], *call.text[2]);
        if (!replaced) return text_call::null;
        assign_text(call.result, nullptr, *replaced);
        return 0;
    }
};

const register_text_function<rreplace_function, for_each_triple<text_of_three, usr_atoms, usr_atoms, usr_atoms>, modes3>
    registered;

}  // namespace

void define_rreplace() {}

}  // namespace qve
