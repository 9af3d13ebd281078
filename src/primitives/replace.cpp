#include "primitives/text_function.h"

namespace qve {
namespace {

template <class A, class B>
using with_third =
    signatures<sig<usr4, A, B, usr1>, sig<usr4, A, B, usr2>, sig<usr4, A, B, usr4>, sig<usr4, A, B, usr8>>;
using text_triples =
    joined<with_third<usr1, usr1>, with_third<usr1, usr2>, with_third<usr1, usr4>, with_third<usr1, usr8>,
           with_third<usr2, usr1>, with_third<usr2, usr2>, with_third<usr2, usr4>, with_third<usr2, usr8>,
           with_third<usr4, usr1>, with_third<usr4, usr2>, with_third<usr4, usr4>, with_third<usr4, usr8>,
           with_third<usr8, usr1>, with_third<usr8, usr2>, with_third<usr8, usr4>, with_third<usr8, usr8>>;

struct replace_function {
    static constexpr const wchar_t* name = L"replace";
    static constexpr text_kind kind = text_kind::text;
    static long long apply(text_call& call) {
        call.order->replace(call.result, *call.text[0], *call.text[1], *call.text[2]);
        return 0;
    }
};

const register_text_function<replace_function, text_triples, modes3> registered;

}  // namespace

void define_replace() {}

}  // namespace qve
