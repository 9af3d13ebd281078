#include <cstring>
#include <ostream>
#include <streambuf>
#include <string_view>

#include "primitives/capacity.h"
#include "primitives/text_values.h"
#include "primitives/tokens.h"
#include "primitives/views.h"
#include "types/atom_text.h"
#include "types/usrheap.h"
#include "types/varchar.h"

namespace qve {
namespace {

// The text of one value at a time, in place.
class value_text : private std::streambuf {
public:
    value_text() : m_stream(this) {}
    template <class T>
    std::string_view print(const T& value) {
        setp(m_text, m_text + sizeof m_text);
        print_atom(m_stream, value);
        return {pbase(), static_cast<size_t>(pptr() - pbase())};
    }

private:
    char m_text[64];
    std::ostream m_stream;
};

}  // namespace

template <class T, bool Constant>
unsigned print_text(unsigned n, output_column out, input_column a, unsigned const* sel) {
    using view = std::conditional_t<Constant, val<T>, col<T>>;
    n = rows_that_fit(n, out, out.width, sel);
    rows_that_fit(n, is_token_width(out.width) && view::fits(a) && (n == 0 || out.heap));
    if (n == 0) return 0;
    const view values(a);
    const token_writer writer(out);
    const usrtype* utf8 = varchar::usrtypeof(varchar::clob_precision, 1);
    // Into a heap of UTF-8 the bytes go as they are; another heap casts.
    const bool as_they_are = out.heap->type()->scale() == 1;
    value_text text;
    usratom atom;
    T last = datatraits<T>::null;
    unsigned long long token = usrheap::null_token;
    for (unsigned k = 0; k < n; ++k) {
        const unsigned i = sel ? sel[k] : k;
        const T value = values[i];
        if (is_null(value)) {
            writer.put(i, usrheap::null_token);
            continue;
        }
        if (is_null(last) || std::memcmp(&value, &last, sizeof value) != 0) {
            const std::string_view bytes = text.print(value);
            if (as_they_are) {
                token = out.heap->put_bytes(bytes.data(), bytes.size());
            } else {
                atom.assign(utf8, bytes.data(), bytes.size(), true);
                token = out.heap->put(atom);
            }
            last = value;
        }
        writer.put(i, token);
    }
    return n;
}

#define QVE_PRINT_TEXT(T)                                                                           \
    template unsigned print_text<T, false>(unsigned, output_column, input_column, unsigned const*); \
    template unsigned print_text<T, true>(unsigned, output_column, input_column, unsigned const*);
QVE_PRINT_TEXT(bit)
QVE_PRINT_TEXT(tiny)
QVE_PRINT_TEXT(short)
QVE_PRINT_TEXT(int)
QVE_PRINT_TEXT(bigint)
QVE_PRINT_TEXT(uchr)
QVE_PRINT_TEXT(usht)
QVE_PRINT_TEXT(ulng)
QVE_PRINT_TEXT(oid)
QVE_PRINT_TEXT(float)
QVE_PRINT_TEXT(double)
QVE_PRINT_TEXT(date)
QVE_PRINT_TEXT(datetime)
QVE_PRINT_TEXT(duration)
#undef QVE_PRINT_TEXT

}  // namespace qve
