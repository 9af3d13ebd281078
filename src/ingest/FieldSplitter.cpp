#include "ingest/FieldSplitter.h"

#include <emmintrin.h>

#include <bit>
#include <cstring>

namespace qve {
namespace {

constexpr size_t block_size = 64;
constexpr size_t not_closed = ~size_t{0};

uint64_t Equals(const char* block, __m128i wanted) {
    uint64_t mask = 0;
    for (unsigned i = 0; i < 4; ++i) {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(block + 16 * i));
        const auto bits = static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(bytes, wanted)));
        mask |= static_cast<uint64_t>(bits) << (16 * i);
    }
    return mask;
}

constexpr uint64_t below(unsigned bit) {
    return (uint64_t{1} << bit) - 1;
}

}  // namespace

struct FieldSplitter::Masks {
    uint64_t fields;
    uint64_t records;
    uint64_t quotes;
};

FieldSplitter::FieldSplitter(const parse_config& config)
    : m_record(config.record_delimiter),
      m_field(config.field_delimiter),
      m_double(config.double_quote ? config.double_quote : config.record_delimiter),
      m_single(config.single_quote ? config.single_quote : config.record_delimiter),
      m_escape(config.escape),
      m_hasEscape(config.escape != 0) {}

FieldSplitter::Masks FieldSplitter::Classify(const char* block) const {
    const uint64_t records = Equals(block, _mm_set1_epi8(m_record));
    const uint64_t quotes = Equals(block, _mm_set1_epi8(m_double)) | Equals(block, _mm_set1_epi8(m_single));
    return {Equals(block, _mm_set1_epi8(m_field)) & ~records, records, quotes & ~records};
}

// The place behind the quote that closes the one at `quote`.
size_t FieldSplitter::SkipQuoted(const char* text, size_t length, size_t quote) const {
    const char q = text[quote];
    const size_t limit = length - quote > maxQuoted ? quote + maxQuoted : length;
    for (size_t i = quote + 1; i < limit; ++i) {
        if (text[i] == q) {
            if (i + 1 < length && text[i + 1] == q) {
                ++i;
            } else {
                return i + 1;
            }
        } else if (m_hasEscape && text[i] == m_escape) {
            ++i;
        }
    }
    return not_closed;
}

void FieldSplitter::Split(const char* text, size_t length, bool final, SplitText& out) const {
    // Room for one delimiter a byte of the next block is kept, so that the inner loops need no test.
    size_t count = 0;
    size_t records = 0;
    const auto reserve = [&] {
        if (out.delimiters.size() < count + block_size + 1) out.delimiters.resize(2 * count + 4096);
        if (out.records.size() < records + block_size + 1) out.records.resize(2 * records + 1024);
    };
    const auto emit = [&](size_t base, uint64_t fields, uint64_t ends) {
        unsigned* to = out.delimiters.data();
        const uint64_t all = fields | ends;
        for (; ends; ends &= ends - 1) {
            const auto bit = static_cast<unsigned>(std::countr_zero(ends));
            const uint64_t upTo = below(bit) | uint64_t{1} << bit;
            out.records[records++] = static_cast<unsigned>(count + std::popcount(all & upTo));
        }
        for (uint64_t rest = all; rest; rest &= rest - 1) {
            to[count++] = static_cast<unsigned>(base + std::countr_zero(rest));
        }
    };

    char tail[block_size];
    bool atStart = true;  // the next byte begins a field
    for (size_t i = 0; i < length;) {
        reserve();
        const size_t room = length - i;
        const char* block = text + i;
        uint64_t valid = ~uint64_t{0};
        if (room < block_size) {
            std::memcpy(tail, block, room);
            std::memset(tail + room, 0, block_size - room);
            block = tail;
            valid = below(static_cast<unsigned>(room));
        }
        Masks masks = Classify(block);
        masks.fields &= valid;
        masks.records &= valid;
        const uint64_t all = masks.fields | masks.records;
        uint64_t openers = masks.quotes & valid & (all << 1 | static_cast<uint64_t>(atStart));
        size_t next = i + block_size;
        if (openers == 0) {
            emit(i, masks.fields, masks.records);
            atStart = (all >> 63) != 0;
        } else {
            const auto opener = static_cast<unsigned>(std::countr_zero(openers));
            emit(i, masks.fields & below(opener), masks.records & below(opener));
            next = SkipQuoted(text, length, i + opener);
            if (next == not_closed) {
                const bool runaway = length - (i + opener) > maxQuoted;
                if (!final && !runaway) break;
                next = i + opener + 1;
            }
            atStart = false;
        }
        i = next;
    }
    if (final && length > 0) {
        const size_t last = records ? out.delimiters[out.records[records - 1] - 1] + size_t{1} : 0;
        if (last < length) {  // the last record ends without a delimiter
            reserve();
            out.delimiters[count++] = static_cast<unsigned>(length);
            out.records[records++] = static_cast<unsigned>(count);
        }
    }
    out.delimiters.resize(records ? out.records[records - 1] : 0);
    out.records.resize(records);
    out.length = records ? std::min<size_t>(out.delimiters.back() + size_t{1}, length) : 0;
}

unsigned split_ragged_fields_char_col(const char* text, const SplitText& split, unsigned columns,
                                      std::vector<unsigned>& begins, std::vector<unsigned>& ends) {
    begins.clear();
    ends.clear();
    begins.reserve(split.records.size() * columns);
    ends.reserve(split.records.size() * columns);
    unsigned records = 0;
    unsigned first = 0;
    unsigned before = ~0U;
    for (const unsigned last : split.records) {
        const unsigned fields = last - first;
        const unsigned end = split.delimiters[last - 1];
        const unsigned length = end - (before + 1);
        const bool blank = fields == 1 && (length == 0 || (length == 1 && text[before + 1] == '\r'));
        if (!blank || columns == 1) {
            for (unsigned column = 0; column < columns; ++column) {
                begins.push_back(column < fields ? before : end - 1);
                const bool folds = column + 1 >= columns || column + 1 >= fields;
                const unsigned behind = folds ? end : split.delimiters[first + column];
                ends.push_back(behind);
                before = behind;
            }
            ++records;
        }
        first = last;
        before = end;
    }
    return records;
}

}  // namespace qve
