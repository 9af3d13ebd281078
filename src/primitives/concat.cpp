#include <string>

#include "primitives/text_function.h"
#include "system/UnicodeUnits.h"
#include "types/text_argument.h"
#include "types/usrtype.h"

namespace qve {
namespace {

struct concat_function {
    static constexpr const wchar_t* name = L"concat";
    static constexpr text_kind kind = text_kind::text;
    static long long apply(text_call& call) {
        // Both come to the width of the result; within one width the bytes are just joined.
        const unsigned width = static_cast<unsigned>(call.result.type()->scale());
        std::string joined;
        for (const usratom* part : {call.text[0], call.text[1]}) {
            const unsigned own = static_cast<unsigned>(part->type()->scale());
            if (own == width) {
                joined += part->bytes();
            } else {
                std::string buffer;
                Unicode::AppendUnits(joined, Unicode::ToUTF8(part->bytes(), own, buffer), width);
            }
        }
        if (joined.size() > longest_text) return text_call::null;
        call.result.assign(call.result.type(), joined.data(), joined.size());
        return 0;
    }
};

const register_text_function<concat_function, for_each_pair<text_of_two, usr_atoms>, modes2> registered;

}  // namespace

void define_concat() {}

}  // namespace qve
