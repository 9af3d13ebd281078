#include <map>
#include <string>
#include <string_view>

#include "primitives/capacity.h"
#include "primitives/groups.h"
#include "primitives/kernel_table.h"
#include "primitives/tokens.h"
#include "system/UnicodeUnits.h"
#include "types/heap_reader.h"
#include "types/text_argument.h"
#include "types/usrtype.h"

namespace qve {
namespace {

// What stands between two texts of a group.
constexpr std::string_view separator = ", ";

// Appends text of code units of `from` bytes as such of `to` bytes.
void append_units(std::string& text, std::string_view units, unsigned from, unsigned to) {
    if (from == to) {
        text += units;
        return;
    }
    std::string buffer;
    Unicode::AppendUnits(text, Unicode::ToUTF8(units, from, buffer), to);
}

// Adds a text to others, if there are any; leaves it out where the whole would be longer than a text may be.
void append_text(std::string& texts, bool first, std::string_view units, unsigned from, unsigned to) {
    std::string piece;
    if (!first) append_units(piece, separator, 1, to);
    append_units(piece, units, from, to);
    if (texts.size() + piece.size() <= longest_text) texts += piece;
}

unsigned unit_width(const usrheap& heap) {
    return heap.type()->scale() > 0 ? static_cast<unsigned>(heap.type()->scale()) : 1;
}

// Joins the texts of each group, in the order of the rows and with a separator between them. A null adds nothing. What
// a vector adds to a group is stored once.
unsigned collect_text(unsigned n, output_column out, input_column a, bool constant, input_column groups,
                      bool constant_group, unsigned const* sel) {
    rows_that_fit(n, is_token_width(out.width) && is_token_width(a.width) && groups.width == sizeof(unsigned));
    if (n == 0) return 0;
    unsigned const* group = groups.values<unsigned>();
    const bool one_group = constant_group || groups.flags & column_flags::constant;
    rows_that_fit(n, (one_group ? *group : highest_group(n, group, sel)) < out.limit);
    if (!out.heap || !a.heap) return n;  // tokens without a heap are no texts

    const unsigned from = unit_width(*a.heap);
    const unsigned to = unit_width(*out.heap);
    const token_view tokens(a, constant);
    const heap_reader values(a.heap);
    std::map<unsigned, std::string> added;
    for (unsigned k = 0; k < n; ++k) {
        const unsigned i = sel ? sel[k] : k;
        const std::string_view value = values[tokens[i]];
        if (!value.data()) continue;
        const auto [found, first] = added.try_emplace(one_group ? *group : group[i]);
        append_text(found->second, first, value, from, to);
    }
    const token_view accumulators({out.data, out.heap, out.width, out.limit, 0}, false);
    const token_writer writer(out);
    for (const auto& [number, text] : added) {
        const std::string_view holder = out.heap->bytes(accumulators[number]);
        std::string joined(holder);
        append_text(joined, !holder.data(), text, to, to);
        writer.put(number, out.heap->put_bytes(joined.data(), joined.size()));
    }
    return n;
}

struct collect_maker {
    template <bool Constant, bool ConstantGroup>
    static unsigned run(unsigned n, output_column out, input_column a, input_column groups, unsigned const* sel) {
        return collect_text(n, out, a, Constant, groups, ConstantGroup, sel);
    }
    template <class R, class A, template <class> class View, template <class> class Group>
    static constexpr auto entry(sig<R, A>, mode<View, Group>) {
        return kernel_entry<binary_func>{&run<is_val<View<A>>, is_val<Group<unsigned>>>,
                                         type_name<R>,
                                         {type_name<A>, L"ulng"},
                                         {View<A>::storage, Group<unsigned>::storage}};
    }
};

template <class T>
using same_tokens = sig<T, T>;

const registration registered(primitive::klassAggregate, L"collect",
                              kernel_span(kernel_table<collect_maker, for_each_atom<same_tokens, usr_atoms>, modes2>));

}  // namespace

void define_collect() {}

}  // namespace qve
