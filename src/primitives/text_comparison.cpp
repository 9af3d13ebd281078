#include "primitives/text_comparison.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "primitives/thread_collation.h"
#include "primitives/tokens.h"
#include "system/UnicodeUnits.h"
#include "types/collation.h"
#include "types/heap_reader.h"
#include "types/usrtype.h"

namespace qve {
namespace {

text_order sign(int x) {
    return static_cast<text_order>((x > 0) - (x < 0));
}

text_order null_order(bool a, bool b) {
    return a && b ? both_null : one_null;
}

// Order of bytes, then the shorter first.
text_order compare_bytes(std::string_view a, std::string_view b) {
    return sign(a.compare(b));
}

uint64_t word(const char* p, unsigned bytes) {
    uint64_t w = 0;
    std::memcpy(&w, p, bytes);
    return w;
}

// Most texts are short: words that may overlap cost less than a call.
bool same_bytes(std::string_view a, std::string_view b) {
    const size_t size = a.size();
    if (size != b.size()) return false;
    const char* const p = a.data();
    const char* const q = b.data();
    if (size > 32) return std::memcmp(p, q, size) == 0;
    if (size >= 8) {
        uint64_t differences = word(p + size - 8, 8) ^ word(q + size - 8, 8);
        for (size_t i = 0; i + 8 < size; i += 8) differences |= word(p + i, 8) ^ word(q + i, 8);
        return differences == 0;
    }
    if (size >= 4) return word(p, 4) == word(q, 4) && word(p + size - 4, 4) == word(q + size - 4, 4);
    for (size_t i = 0; i < size; ++i) {
        if (p[i] != q[i]) return false;
    }
    return true;
}

text_order equal_bytes(std::string_view a, std::string_view b) {
    return same_bytes(a, b) ? text_equal : text_greater;
}

// Comparing two values of a collation costs much more than looking whether the same pair was just compared.
class order_cache {
public:
    template <class Compare>
    text_order get(unsigned long long a, unsigned long long b, Compare compare) {
        entry& found = m_entries[(a ^ (b * 7)) % m_entries.size()];
        if (!found.used || found.a != a || found.b != b) found = {a, b, compare(), true};
        return found.order;
    }

private:
    struct entry {
        unsigned long long a, b;
        text_order order;
        bool used = false;
    };
    std::array<entry, 128> m_entries{};
};

enum class method { numbers, bytes, collated };

method method_of(const input_column& a, const input_column& b, bool equality) {
    if (!a.heap && !b.heap) return method::numbers;
    if (!a.heap || !b.heap) return method::bytes;  // one side is all null
    const usrtype* left = a.heap->type();
    const usrtype* right = b.heap->type();
    if (!left->collation() && !right->collation()) return method::bytes;
    const bool binary = left->collation() == right->collation() && left->scale() == right->scale() &&
                        left->collation()->name() == collation::collationBinary;
    return binary && (equality || left->scale() == 1) ? method::bytes : method::collated;
}

template <class Compare>
void compare_rows(unsigned n, text_order* orders, const token_view& a, const token_view& b, unsigned base,
                  unsigned const* sel, Compare compare) {
    for (unsigned k = 0; k < n; ++k) {
        const unsigned i = sel ? sel[k] : base + k;
        orders[k] = compare(a[i], b[i]);
    }
}

}  // namespace

void compare_text(unsigned n, text_order* orders, const input_column& a, bool a_constant, const input_column& b,
                  bool b_constant, unsigned base, unsigned const* sel, bool equality) {
    rows_that_fit(n, is_token_width(a.width) && is_token_width(b.width));
    const token_view left(a, a_constant);
    const token_view right(b, b_constant);
    const method how = method_of(a, b, equality);
    if (how == method::numbers) {
        compare_rows(n, orders, left, right, base, sel, [](unsigned long long x, unsigned long long y) {
            const bool x_null = x == usrheap::null_token;
            const bool y_null = y == usrheap::null_token;
            if (x_null || y_null) return null_order(x_null, y_null);
            return static_cast<text_order>((x > y) - (x < y));
        });
        return;
    }
    // A resident heap gives views that stay; another one only until the next read, and its one reader serves both
    // sides.
    const heap_reader left_values(a.heap);
    const heap_reader right_values(b.heap);
    std::string left_copy;
    const bool moves =
        a.heap && b.heap && a.heap->stream() == b.heap->stream() && a.heap->stream() && !a.heap->stream()->IsResident();
    const auto values = [&](unsigned long long x, unsigned long long y, auto compare) {
        std::string_view p = left_values[x];
        if (moves && p.data()) [[unlikely]]
            p = left_copy.assign(p);
        const std::string_view q = right_values[y];
        if (!p.data() || !q.data()) return null_order(!p.data(), !q.data());
        return compare(p, q);
    };
    if (how == method::bytes) {
        const auto compare_all = [&](auto order) {
            compare_rows(n, orders, left, right, base, sel,
                         [&](unsigned long long x, unsigned long long y) { return values(x, y, order); });
        };
        if (equality) {
            compare_all([](std::string_view p, std::string_view q) { return equal_bytes(p, q); });
        } else {
            compare_all([](std::string_view p, std::string_view q) { return compare_bytes(p, q); });
        }
        return;
    }
    const usrtype* left_type = a.heap->type();
    const usrtype* right_type = b.heap->type();
    const thread_collation collated(left_type->collation() ? left_type->collation() : right_type->collation());
    const bool same_form = left_type->scale() == right_type->scale();
    const auto width = static_cast<unsigned>(left_type->scale());
    const bool by_byte = equality && same_form && collated->compares_ascii_by_byte();
    usratom left_atom(left_type);
    usratom right_atom(right_type);
    order_cache cache;
    compare_rows(n, orders, left, right, base, sel, [&](unsigned long long x, unsigned long long y) {
        return cache.get(x, y, [&] {
            return values(x, y, [&](std::string_view p, std::string_view q) {
                if (same_form && p == q) return text_equal;
                if (by_byte && Unicode::Units::IsPrintableASCII(p, width) &&
                    Unicode::Units::IsPrintableASCII(q, width)) {
                    return text_greater;
                }
                left_atom.assign(left_type, p.data(), p.size(), true);
                right_atom.assign(right_type, q.data(), q.size(), true);
                return sign(collated->compare(left_atom, right_atom));
            });
        });
    });
}

}  // namespace qve
