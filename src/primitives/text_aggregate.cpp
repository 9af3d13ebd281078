#include "primitives/text_aggregate.h"

#include <optional>
#include <string>

#include "primitives/capacity.h"
#include "primitives/groups.h"
#include "primitives/thread_collation.h"
#include "primitives/token_copier.h"
#include "primitives/tokens.h"
#include "types/usrtype.h"

namespace qve {
namespace {

// The values of two heaps in the order of their type.
class value_order {
public:
    explicit value_order(const usrtype* type) : m_type(type), m_left(type), m_right(type) {
        if (type->collation()) m_collation.emplace(type->collation());
    }
    bool less(std::string_view left, std::string_view right) {
        m_left.assign(m_type, left.data(), left.size(), true);
        m_right.assign(m_type, right.data(), right.size(), true);
        return (m_collation ? (*m_collation)->compare(m_left, m_right) : m_type->compare(m_left, m_right)) < 0;
    }

private:
    const usrtype* m_type;
    std::optional<thread_collation> m_collation;
    usratom m_left, m_right;
};

}  // namespace

unsigned aggregate_text(unsigned n, output_column out, input_column a, bool a_constant, input_column groups,
                        bool constant_group, unsigned const* sel, text_pick pick) {
    rows_that_fit(n, is_token_width(out.width) && is_token_width(a.width) && groups.width == sizeof(unsigned));
    if (n == 0) return 0;
    unsigned const* group = groups.values<unsigned>();
    const bool one_group = constant_group || groups.flags & column_flags::constant;
    rows_that_fit(n, (one_group ? *group : highest_group(n, group, sel)) < out.limit);

    const token_view tokens(a, a_constant);
    const token_view accumulators({out.data, out.heap, out.width, out.limit, 0}, false);
    const token_writer writer(out);
    token_copier copy(a.heap, out.heap);
    const usrheap* heap = out.heap ? out.heap : a.heap;
    std::optional<value_order> order;
    if (heap) order.emplace(heap->type());
    std::string kept;  // of the accumulator: reading the other value may move the heap's window
    const auto beats = [&](unsigned long long challenger, unsigned long long holder) {
        if (pick == text_pick::any || challenger == holder) return false;
        if (!order) return pick == text_pick::least ? challenger < holder : challenger > holder;
        const std::string_view held = heap->bytes(holder);
        if (!held.data()) return true;
        kept.assign(held);
        const std::string_view value = heap->bytes(challenger);
        return pick == text_pick::least ? order->less(value, kept) : order->less(kept, value);
    };
    unsigned last_group = 0;
    unsigned long long last_token = usrheap::null_token;
    for (unsigned k = 0; k < n; ++k) {
        const unsigned i = sel ? sel[k] : k;
        const unsigned g = one_group ? *group : group[i];
        const unsigned long long token = copy(tokens[i]);
        if (token == usrheap::null_token || (token == last_token && g == last_group)) continue;
        last_group = g;
        last_token = token;
        const unsigned long long holder = accumulators[g];
        if (holder == usrheap::null_token || beats(token, holder)) writer.put(g, token);
    }
    return n;
}

}  // namespace qve
