#include <vector>

#include "primitives/text_function.h"

namespace qve {
namespace {

// Bytes, not characters: the result is ordered byte by byte and is not for reading.
struct sortkey_function {
    static constexpr const wchar_t* name = L"sortkey";
    static constexpr text_kind kind = text_kind::text;
    static long long apply(text_call& call) {
        thread_local std::vector<unsigned char> key;
        call.order->sortkey(key, *call.text[0]);
        call.result.assign(call.result.type(), reinterpret_cast<const char*>(key.data()), key.size());
        return 0;
    }
};

const register_text_function<sortkey_function, for_each_atom<text_of_text, usr_atoms>, modes1> registered;

}  // namespace

void define_sortkey() {}

}  // namespace qve
