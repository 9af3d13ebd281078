#include "primitives/aggregate_kernel.h"

namespace qve {
namespace {

template <class Group>
struct countstar_kernel {
    static unsigned run(unsigned n, output_column out, input_column groups, unsigned const* sel) {
        rows_that_fit(n, out.width == sizeof(bigint) && groups.width == sizeof(unsigned));
        if (n == 0) return 0;
        bigint* counts = out.values<bigint>();
        unsigned const* group = groups.values<unsigned>();
        if (is_val<Group> || groups.flags & column_flags::constant) {
            rows_that_fit(n, *group < out.limit);
            counts[*group] += n;
        } else {
            rows_that_fit(n, highest_group(n, group, sel) < out.limit);
            for (unsigned k = 0; k < n; ++k) ++counts[group[sel ? sel[k] : k]];
        }
        if (out.flags) *out.flags |= column_flags::not_null;
        return n;
    }
};

constexpr kernel_entry<unary_func> entries[] = {
    {countstar_kernel<col<unsigned>>::run, L"bigint", {L"ulng"}, {L"col"}},
    {countstar_kernel<val<unsigned>>::run, L"bigint", {L"ulng"}, {L"val"}},
};

const registration registered(primitive::klassAggregate, L"countstar",
                              std::span<const kernel_entry<unary_func>>(entries));

}  // namespace

void define_countstar() {}

}  // namespace qve
