#pragma once

#include <utility>

#include "primitives/primitive.h"
#include "system/QuillonException.h"

namespace qve {

struct input_column;
struct output_column;
class usrheap;

// The kinds of kernels. `n` counts the rows to process; `sel` lists their positions, ascending, or is null for all rows
// from 0 to n-1. A map writes at the positions it reads and leaves the others alone. A select writes the positions that
// pass into `out` (unsigned 32-bit) and returns how many. An aggregate folds row i into out[group(i)]; its last
// input_column is the group index, "ulng"; flag bit 1 on it says that all rows are of the group in its first value.
// Every kernel stops the program with an arithmetic trap when `out` is too small for what it is asked to write.

/// Map without arguments.
using nullary_func = unsigned (*)(unsigned n, output_column out, unsigned const* sel);
/// Unary map and select; aggregate without argument ("countstar": `a` is the group index).
using unary_func = unsigned (*)(unsigned n, output_column out, input_column a, unsigned const* sel);
/// Binary map and select; aggregate of one argument (`b` is the group index).
using binary_func = unsigned (*)(unsigned n, output_column out, input_column a, input_column b, unsigned const* sel);
/// Ternary map and select; aggregate of two arguments (`c` is the group index). For "check" and "recheck" `a` is the
/// key of the rows, `b` the table of keys by group, and `out` has one "bit" per row.
using ternary_func = unsigned (*)(unsigned n, output_column out, input_column a, input_column b, input_column c,
                                  unsigned const* sel);
/// Decides the next `n` steps of a two-way merge: bit k of `out` (from the least significant bit of each byte) is 1
/// when step k takes from `a`. Stops early when a side is exhausted. Returns how many come from `a` and from `b`.
using merge_func = std::pair<unsigned, unsigned> (*)(unsigned n, output_column out, input_column a, input_column b);
/// Sorts `n` keys in place and moves the index in step. Flag bit 2 of `keys` allows threads. With an index of storage
/// "val" only the keys move.
using sort_func = void (*)(unsigned long n, output_column index, output_column keys);
/// Merges at most 16 sorted runs; writes up to `n` index and key values and returns how many. Run r has its keys at
/// keys[r], its index values at indexes[r], and is read from positions[r], which is advanced, to ends[r]. A null
/// keys[r] ends the list. heaps[r] is the heap of the run's keys, null for plain atoms; so may be `heaps` itself.
using multimerge_func = unsigned (*)(unsigned n, output_column index, output_column keys, unsigned* positions,
                                     unsigned const* ends, usrheap** heaps, void const** keys_of_runs,
                                     void const** indexes_of_runs);

/// A primitive with its function. F is one of the function types above.
template <class F>
class primitive_func : public primitive {
public:
    /// The arguments after `function` are those of primitive.
    template <class... Args>
    explicit primitive_func(F function, Args&&... args)
        : primitive(std::forward<Args>(args)...), m_function(function) {}
    F function() const { return m_function; }

private:
    F m_function;
};

/// Raises logic error 40378 "ResolvePrimitive".
[[noreturn]] void throw_resolve_primitive();

/// The function of a primitive, which must be of type F; else logic error 40378.
template <class F>
F ResolvePrimitive(primitive* p) {
    const auto* typed = dynamic_cast<primitive_func<F>*>(p);
    if (!typed) throw_resolve_primitive();
    return typed->function();
}

}  // namespace qve
