#include "primitives/aggregate_kernel.h"

namespace qve {
namespace {

constexpr unsigned few_groups = 64;
constexpr unsigned copies = 4;

// Each group has several counters: one that was just raised is not ready to be raised again at once.
void count_few(unsigned n, bigint* counts, unsigned const* group, unsigned const* sel, unsigned highest) {
    unsigned parts[copies][few_groups];
    for (auto& copy : parts) std::fill_n(copy, highest + 1, 0u);
    unsigned k = 0;
    for (; k + copies <= n; k += copies) {
        for (unsigned copy = 0; copy < copies; ++copy) ++parts[copy][group[sel ? sel[k + copy] : k + copy]];
    }
    for (; k < n; ++k) ++parts[0][group[sel ? sel[k] : k]];
    for (unsigned g = 0; g <= highest; ++g) counts[g] += bigint{parts[0][g]} + parts[1][g] + parts[2][g] + parts[3][g];
}

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
            const unsigned highest = highest_group(n, group, sel);
            rows_that_fit(n, highest < out.limit);
            if (highest < few_groups && n >= few_groups) {
                count_few(n, counts, group, sel, highest);
            } else {
                for (unsigned k = 0; k < n; ++k) ++counts[group[sel ? sel[k] : k]];
            }
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
