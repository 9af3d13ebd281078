#include "primitives/select_kernel.h"

namespace qve {
namespace {

// Where the condition is true the second value answers, else (also for a null) the third.
struct iif_op {
    static constexpr const wchar_t* name = L"iif";
    static constexpr null_rule nulls = null_rule::own;

    template <class R, class A, class B, class C>
    [[gnu::always_inline]] static bit apply(A condition, B yes, C no) {
        return condition.value & 1 ? yes : no;
    }
};

using iif_modes = modes<mode<col, col, col>, mode<col, col, val>, mode<col, val, col>, mode<col, val, val>,
                        mode<val, col, col>, mode<val, col, val>, mode<val, val, col>, mode<val, val, val>>;

const register_predicate<iif_op, signatures<sig<bit, bit, bit, bit>>, iif_modes> registered;

}  // namespace

void define_iif() {}

}  // namespace qve
