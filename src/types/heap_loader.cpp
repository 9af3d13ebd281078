#include "types/heap_loader.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "system/QuillonException.h"
#include "types/hashaccel.h"
#include "types/heap_reader.h"
#include "types/status.h"
#include "types/usrheap.h"

namespace qve {
namespace {

// How many values are looked up together, so that their cache misses overlap.
constexpr unsigned batch = 32;
// Bytes of new entries that wait for one write.
constexpr size_t most_waiting = size_t{1} << 20;

bool holds(const char* entry, unsigned prefix, std::string_view value) {
    uint64_t length = 0;
    std::memcpy(&length, entry, prefix);
    return length == value.size() && std::memcmp(entry + prefix, value.data(), length) == 0;
}

}  // namespace

void heap_loader::add_entry(std::string_view value) {
    const uint64_t length = value.size();
    const unsigned prefix = m_heap.prefix_width();
    if (prefix < 8 && length >> (8 * prefix)) {
        throw QVE_OverflowError(status::usrheap_put, "usrheap::put: Value does not fit its heap");
    }
    m_entries.append(reinterpret_cast<const char*>(&length), prefix);
    m_entries.append(value);
}

void heap_loader::flush() {
    m_heap.stream()->Append(m_entries.data(), m_entries.size());
    m_entries.clear();
}

void heap_loader::put(unsigned count, unsigned long long* tokens, const std::string_view* values) {
    hashaccel* const index = m_heap.stream() ? m_heap.accelerator()->hashed() : nullptr;
    // To a collation a new value may equal others that are stored: each has to be there before the next comes.
    if (!index || !index->exact() || m_heap.prefix_width() == 0) {
        for (unsigned i = 0; i < count; ++i) {
            tokens[i] = values[i].data() ? m_heap.put_bytes(values[i].data(), values[i].size()) : usrheap::null_token;
        }
        return;
    }
    try {
        for (unsigned from = 0; from < count; from += batch) {
            put_batch(*index, std::min(batch, count - from), tokens + from, values + from);
        }
        flush();
    } catch (...) {
        // What the index knows beyond the stream's end must not be found.
        m_entries.clear();
        m_heap.stream()->SetAccelerator(nullptr);
        throw;
    }
}

void heap_loader::put_batch(hashaccel& index, unsigned count, unsigned long long* tokens,
                            const std::string_view* values) {
    if (m_entries.size() > most_waiting) flush();
    unsigned keys[batch];
    for (unsigned i = 0; i < count; ++i) {
        keys[i] = values[i].data() ? index.key(values[i]) : 0;
        index.prefetch(keys[i]);
    }
    DataStream& stream = *m_heap.stream();
    const uint64_t stored = stream.GetSize();
    // A dictionary that is looked up at random is mapped whole.
    if (stream.GetPageLimit() < stored && !stream.IsResident()) stream.SetPageLimit(std::bit_ceil(stored));
    const heap_reader reader(&m_heap);
    for (unsigned i = 0; i < count; ++i) {
        tokens[i] = values[i].data() ? index.first_candidate(keys[i]) : usrheap::null_token;
        reader.prefetch(tokens[i]);
    }
    const unsigned prefix = m_heap.prefix_width();
    const auto equals = [&](unsigned long long token, std::string_view value) {
        return token < stored ? reader[token] == value : holds(m_entries.data() + (token - stored), prefix, value);
    };
    for (unsigned i = 0; i < count; ++i) {
        const std::string_view value = values[i];
        if (!value.data() || (tokens[i] != usrheap::null_token && equals(tokens[i], value))) continue;
        // New, or hidden behind another value of its hash, or added by this very loop.
        tokens[i] = index.find_matching(keys[i], [&](unsigned long long token) { return equals(token, value); });
        if (tokens[i] != usrheap::null_token) continue;
        tokens[i] = stored + m_entries.size();
        add_entry(value);
        index.insert_bytes(m_heap, value, keys[i], tokens[i]);
    }
}

}  // namespace qve
