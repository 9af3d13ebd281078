#include "primitives/regexp.h"
#include "primitives/text_function.h"
#include "types/text_argument.h"

namespace qve {
namespace {

struct rextract_function {
    static constexpr const wchar_t* name = L"rextract";
    static constexpr text_kind kind = text_kind::text;
    static long long apply(text_call& call) {
        const auto group = regexp::local().extract(*call.text[0], *call.text[1], call.number);
        if (!group) return text_call::null;
        assign_text(call.result, nullptr, *group);
        return 0;
    }
};

const register_text_function<rextract_function, for_each_triple<text_of_three, usr_atoms, usr_atoms, number_atoms>,
                             modes3>
    registered;

}  // namespace

void define_rextract() {}

}  // namespace qve
