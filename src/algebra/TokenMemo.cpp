#include "algebra/TokenMemo.h"

#include <algorithm>
#include <type_traits>

#include "storage/Column.h"
#include "types/usrheap.h"

namespace qve {

namespace {

// A larger table would fall out of the caches, and cost more to fill than it saves.
constexpr uint64_t bytesLimit = uint64_t{16} << 20;

// So many rows show whether values repeat.
constexpr uint64_t sampleRows = 65536;

// Calls visit(token type, result type) for two widths in bytes.
template <class Visit>
auto WithWidths(uint64_t tokenWidth, uint64_t resultWidth, Visit visit) {
    const auto withResult = [&](auto token) {
        switch (resultWidth) {
            case 1:
                return visit(token, uint8_t{});
            case 2:
                return visit(token, uint16_t{});
            case 4:
                return visit(token, uint32_t{});
            default:
                return visit(token, uint64_t{});
        }
    };
    switch (tokenWidth) {
        case 1:
            return withResult(uint8_t{});
        case 2:
            return withResult(uint16_t{});
        case 4:
            return withResult(uint32_t{});
        default:
            return withResult(uint64_t{});
    }
}

}  // namespace

TokenMemo::TokenMemo(unsigned width) : m_width(width) {}

TokenMemo::~TokenMemo() = default;

bool TokenMemo::Begin(const Column& tokens) {
    if (m_off) return false;
    const uint64_t entries = tokens.GetHeap()->next();
    if ((entries + 1) * (m_width + 1) > bytesLimit || (m_rows > sampleRows && m_misses > m_rows / 2)) {
        m_off = true;
        m_known = {};
        m_results = {};
        return false;
    }
    if (tokens.GetDict() != m_dictionary) {
        m_dictionary = tokens.GetDict();
        m_known.clear();
        m_limit = 0;
    }
    if (m_known.empty() || entries > m_limit) {
        if (!m_known.empty()) m_known[m_limit] = 0;  // the slot of nulls moves up
        m_limit = std::max(entries, 2 * m_limit);
        if ((m_limit + 1) * (m_width + 1) > bytesLimit) m_limit = entries;
        m_known.resize(m_limit + 1);
        m_results.resize((m_limit + 1) * m_width);
    }
    return true;
}

template <class Token, class Result>
unsigned TokenMemo::RecallAs(unsigned count, const unsigned* sel, const Token* tokens, Result* out) {
    const unsigned char* known = m_known.data();
    const Result* results = reinterpret_cast<const Result*>(m_results.data());
    unsigned* missing = m_missing.data();
    unsigned misses = 0;
    const uint64_t limit = m_limit;
    for (unsigned k = 0; k < count; ++k) {
        const unsigned i = sel ? sel[k] : k;
        const uint64_t slot = std::min<uint64_t>(tokens[i], limit);
        out[i] = results[slot];
        missing[misses] = i;
        misses += known[slot] ^ 1;
    }
    return misses;
}

std::span<const unsigned> TokenMemo::Recall(unsigned count, const unsigned* sel, const input_column& tokens,
                                            const output_column& out) {
    m_missing.resize(std::max<size_t>(m_missing.size(), count + size_t{1}));
    const unsigned misses = WithWidths(tokens.width, m_width, [&](auto token, auto result) {
        return RecallAs(count, sel, tokens.values<decltype(token)>(), out.values<decltype(result)>());
    });
    m_rows += count;
    m_misses += misses;
    return {m_missing.data(), misses};
}

template <class Token, class Result>
void TokenMemo::RememberAs(std::span<const unsigned> rows, const Token* tokens, const Result* out) {
    Result* results = reinterpret_cast<Result*>(m_results.data());
    for (const unsigned i : rows) {
        const uint64_t slot = std::min<uint64_t>(tokens[i], m_limit);
        results[slot] = out[i];
        m_known[slot] = 1;
    }
}

void TokenMemo::Remember(std::span<const unsigned> rows, const input_column& tokens, const output_column& out) {
    WithWidths(tokens.width, m_width, [&](auto token, auto result) {
        RememberAs(rows, tokens.values<decltype(token)>(), out.values<decltype(result)>());
        return 0;
    });
}

}  // namespace qve
