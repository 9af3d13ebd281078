#include "primitives/text_function.h"

#include <array>
#include <optional>

#include "primitives/capacity.h"
#include "primitives/thread_collation.h"
#include "primitives/tokens.h"
#include "types/heap_reader.h"
#include "types/usrtype.h"

namespace qve {
namespace {

constexpr unsigned most_texts = 3;

const collation* order_of(std::span<const text_input> inputs) {
    for (const text_input& input : inputs) {
        if (input.reader || !input.column.heap) continue;
        if (const collation* order = input.column.heap->type()->collation()) return order;
    }
    return collation::resolve(collation::collationBinary);
}

// Computes rows and remembers what it computed of late.
class text_evaluator {
public:
    text_evaluator(std::span<const text_input> inputs, usrheap* heap, text_operation operation, text_kind kind)
        : m_order(order_of(inputs)), m_operation(operation), m_kind(kind), m_heap(heap) {
        m_call.order = m_order.get();
        m_call.number = 0;
        for (const text_input& input : inputs) {
            if (input.reader) {
                m_number = &input;
            } else {
                m_texts[m_textCount++].emplace(input);
            }
        }
    }

    // The number, the truth value or the token; text_call::null for a null.
    long long operator()(unsigned i) {
        arguments now{};
        unsigned long long mixed = 0;
        for (unsigned t = 0; t < m_textCount; ++t) {
            now.tokens[t] = m_texts[t]->tokens[i];
            if (now.tokens[t] == usrheap::null_token) return text_call::null;
            mixed = mixed * 31 + now.tokens[t];
        }
        if (m_number) {
            now.number = m_number->reader(m_number->column.data, m_number->constant ? 0 : i);
            if (now.number == text_call::null) return text_call::null;
            mixed = mixed * 31 + static_cast<unsigned long long>(now.number);
        }
        entry& found = m_cache[(mixed ^ mixed >> 17) % m_cache.size()];
        if (!found.used || !(found.of == now)) found = {true, now, computed(now)};
        return found.result;
    }

private:
    struct arguments {
        std::array<unsigned long long, most_texts> tokens{};
        long long number = 0;
        bool operator==(const arguments&) const = default;
    };
    struct entry {
        bool used = false;
        arguments of;
        long long result = 0;
    };
    struct text {
        explicit text(const text_input& input)
            : tokens(input.column, input.constant),
              values(input.column.heap),
              type(input.column.heap ? input.column.heap->type() : nullptr),
              stays(input.column.heap && input.column.heap->stream() && input.column.heap->stream()->IsResident()) {}
        token_view tokens;
        heap_reader values;
        const usrtype* type;
        bool stays;  // a value read stays where it is while others are read
        usratom atom;
    };

    long long computed(const arguments& of) {
        for (unsigned t = 0; t < m_textCount; ++t) {
            text& read = *m_texts[t];
            const std::string_view bytes = read.values[of.tokens[t]];
            if (!bytes.data()) return text_call::null;
            read.atom.assign(read.type, bytes.data(), bytes.size(), read.stays);
            m_call.text[t] = &read.atom;
        }
        m_call.number = of.number;
        if (m_kind != text_kind::text) return m_operation(m_call);
        m_call.result.assign_null(m_heap->type());
        if (m_operation(m_call) == text_call::null) return text_call::null;
        const unsigned long long token = m_heap->put(m_call.result);
        return token == usrheap::null_token ? text_call::null : static_cast<long long>(token);
    }

    thread_collation m_order;
    text_operation m_operation;
    text_kind m_kind;
    usrheap* m_heap;
    std::array<std::optional<text>, most_texts> m_texts;
    unsigned m_textCount = 0;
    const text_input* m_number = nullptr;
    text_call m_call;
    std::array<entry, 128> m_cache;
};

uint64_t width_of(text_kind kind, const output_column& out) {
    switch (kind) {
        case text_kind::text:
            return out.width;
        case text_kind::integer:
            return sizeof(int);
        case text_kind::truth:
            return sizeof(bit);
        case text_kind::moment:
            return sizeof(datetime);
    }
    return 0;
}

bool inputs_fit(std::span<const text_input> inputs) {
    for (const text_input& input : inputs) {
        if (!is_token_width(input.column.width)) return false;
    }
    return true;
}

}  // namespace

unsigned map_text(unsigned n, output_column out, std::span<const text_input> inputs, unsigned const* sel,
                  text_operation operation, text_kind kind) {
    n = rows_that_fit(n, out, width_of(kind, out), sel);
    rows_that_fit(n, inputs_fit(inputs) && (kind != text_kind::text || (out.heap && is_token_width(out.width))));
    if (n == 0) return 0;
    text_evaluator evaluate(inputs, out.heap, operation, kind);
    const token_writer writer(out);
    bool nulls = false;
    for (unsigned k = 0; k < n; ++k) {
        const unsigned i = sel ? sel[k] : k;
        const long long result = evaluate(i);
        const bool null = result == text_call::null;
        nulls |= null;
        switch (kind) {
            case text_kind::text:
                writer.put(i, null ? usrheap::null_token : static_cast<unsigned long long>(result));
                break;
            case text_kind::integer:
                out.values<int>()[i] = null ? datatraits<int>::null : static_cast<int>(result);
                break;
            case text_kind::truth:
                out.values<bit>()[i] = null ? datatraits<bit>::null : bit{static_cast<unsigned char>(result)};
                break;
            case text_kind::moment:
                out.values<datetime>()[i] =
                    null ? datatraits<datetime>::null : datetime{static_cast<unsigned long long>(result)};
                break;
        }
    }
    if (out.flags && !nulls) *out.flags |= column_flags::not_null;
    return n;
}

unsigned select_text(unsigned n, output_column out, std::span<const text_input> inputs, unsigned const* sel,
                     text_operation operation) {
    n = rows_that_fit(n, out.width == sizeof(unsigned) && out.limit >= n && inputs_fit(inputs));
    if (n == 0) return 0;
    text_evaluator evaluate(inputs, nullptr, operation, text_kind::truth);
    unsigned* positions = out.values<unsigned>();
    unsigned count = 0;
    for (unsigned k = 0; k < n; ++k) {
        const unsigned i = sel ? sel[k] : k;
        positions[count] = i;
        count += evaluate(i) == 1;
    }
    return count;
}

}  // namespace qve
