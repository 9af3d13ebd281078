#include "primitives/aggregate_kernel.h"

namespace qve {
namespace {

struct count_op {
    static constexpr const wchar_t* name = L"count";
    static constexpr bool starts_null = false;
    template <class T>
    using kernel_atom = equivalent<T>;

    template <class P>
    static constexpr P identity() {
        return 0;
    }
    template <class P>
    [[gnu::always_inline]] static P merge(P left, P right) {
        return static_cast<P>(static_cast<wrapping<P>>(left) + static_cast<wrapping<P>>(right));
    }
    template <class P, class A>
    [[gnu::always_inline]] static P lift(A) {
        return 1;
    }
    static constexpr bool has_lanes = true;
    static constexpr wide_merge wide = wide_merge::count;
    template <class V>
    [[gnu::always_inline]] static void merge_lanes(V& parts, const V& more) {
        add_lanes(parts, more);
    }
    template <class V, class X>
    [[gnu::always_inline]] static void lift_lanes(V& lifted, const X&) {
        lifted = V{} + 1;
    }
};

template <class T>
using count_sig = sig<bigint, T>;

const register_aggregate<count_op, for_each_atom<count_sig, all_atoms>> registered;

}  // namespace

void define_count() {}

}  // namespace qve
