#include "types/usraccel.h"

#include "types/selected_rows.h"
#include "types/usrheap.h"
#include "types/usrtype.h"

namespace qve {

usratom usraccel::last_atom(const usrheap& heap) const {
    usratom atom(heap.type());
    if (last() != absent) heap.get(last(), atom);
    return atom;
}

void usraccel::build(const usrheap&) {}

unsigned long long usraccel::find(const usrheap&, const usratom&) const {
    return absent;
}

void usraccel::find(const usrheap& heap, unsigned count, output_column out, input_column in,
                    const unsigned* selection) const {
    usratom atom(heap.type());
    for_selected(count, selection, [&](unsigned row) {
        heap.type()->get(in, row, atom);
        store_token(out, row, atom.isnull() ? absent : find(heap, atom));
    });
}

void usraccel::admit(const usratom&) const {}

void usraccel::insert(const usrheap&, const usratom&, unsigned long long) {}

}  // namespace qve
