#include "ingest/FieldSplitter.h"

#include <immintrin.h>

#include <algorithm>
#include <bit>
#include <cstring>

#include "system/CPU.h"

namespace qve {
namespace {

constexpr size_t block_size = 64;
constexpr size_t window_blocks = 16;
constexpr size_t window_size = block_size * window_blocks;
constexpr unsigned at_once = 8;  // positions that are written without asking how many there are
constexpr size_t not_closed = ~size_t{0};

constexpr uint64_t below(unsigned bit) {
    return (uint64_t{1} << bit) - 1;
}

/// The bytes that matter.
struct Marks {
    char field, record, quote, otherQuote;
};

/// For each byte of a block whether it is one of the marks; a byte that ends a record is nothing else.
struct BlockMasks {
    uint64_t fields, records, quotes;
};

uint64_t equals(const char* block, char wanted) {
    const __m128i pattern = _mm_set1_epi8(wanted);
    uint64_t mask = 0;
    for (unsigned i = 0; i < 4; ++i) {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(block + 16 * i));
        const auto bits = static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(bytes, pattern)));
        mask |= static_cast<uint64_t>(bits) << (16 * i);
    }
    return mask;
}

void classify_plain(const char* text, const Marks& marks, BlockMasks* masks) {
    for (size_t i = 0; i < window_blocks; ++i, text += block_size) {
        const uint64_t records = equals(text, marks.record);
        const uint64_t quotes = equals(text, marks.quote) | equals(text, marks.otherQuote);
        masks[i] = {equals(text, marks.field) & ~records, records, quotes & ~records};
    }
}

[[gnu::target("avx2")]] inline uint64_t bits_of(__m256i low, __m256i high) {
    return static_cast<unsigned>(_mm256_movemask_epi8(low)) |
           static_cast<uint64_t>(static_cast<unsigned>(_mm256_movemask_epi8(high))) << 32;
}

[[gnu::target("avx2")]] void classify_avx2(const char* text, const Marks& marks, BlockMasks* masks) {
    const __m256i field = _mm256_set1_epi8(marks.field);
    const __m256i record = _mm256_set1_epi8(marks.record);
    const __m256i quote = _mm256_set1_epi8(marks.quote);
    const __m256i other = _mm256_set1_epi8(marks.otherQuote);
    for (size_t i = 0; i < window_blocks; ++i, text += block_size) {
        const __m256i low = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(text));
        const __m256i high = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(text + 32));
        const uint64_t records = bits_of(_mm256_cmpeq_epi8(low, record), _mm256_cmpeq_epi8(high, record));
        const uint64_t fields = bits_of(_mm256_cmpeq_epi8(low, field), _mm256_cmpeq_epi8(high, field));
        const uint64_t quotes =
            bits_of(_mm256_or_si256(_mm256_cmpeq_epi8(low, quote), _mm256_cmpeq_epi8(low, other)),
                    _mm256_or_si256(_mm256_cmpeq_epi8(high, quote), _mm256_cmpeq_epi8(high, other)));
        masks[i] = {fields & ~records, records, quotes & ~records};
    }
}

void classify(const char* text, const Marks& marks, BlockMasks* masks) {
    static const auto function =
        CPU::IsVectFeatureEnabled() && __builtin_cpu_supports("avx2") ? classify_avx2 : classify_plain;
    function(text, marks, masks);
}

}  // namespace

/// What stands where in a window of the text that begins at `begin`.
struct FieldSplitter::Masks {
    size_t begin = 0;
    size_t end = 0;
    BlockMasks blocks[window_blocks];
};

FieldSplitter::FieldSplitter(const parse_config& config)
    : m_record(config.record_delimiter),
      m_field(config.field_delimiter),
      m_double(config.double_quote ? config.double_quote : config.record_delimiter),
      m_single(config.single_quote ? config.single_quote : config.record_delimiter),
      m_escape(config.escape),
      m_hasEscape(config.escape != 0) {}

void FieldSplitter::Classify(const char* text, size_t length, Masks& masks) const {
    const Marks marks{m_field, m_record, m_double, m_single};
    const size_t room = length - masks.begin;
    masks.end = masks.begin + window_size;
    if (room >= window_size) return classify(text + masks.begin, marks, masks.blocks);
    char tail[window_size];
    std::memcpy(tail, text + masks.begin, room);
    std::memset(tail + room, 0, window_size - room);
    classify(tail, marks, masks.blocks);
    // Even 0 may be a mark, but not behind the end.
    for (size_t i = room / block_size; i < window_blocks; ++i) {
        const uint64_t valid = i == room / block_size ? below(room % block_size) : 0;
        BlockMasks& block = masks.blocks[i];
        block = {block.fields & valid, block.records & valid, block.quotes & valid};
    }
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
        if (out.delimiters.size() < count + block_size + at_once) out.delimiters.resize(2 * count + 4096);
        if (out.records.size() < records + block_size + 1) out.records.resize(2 * records + 1024);
    };
    const auto emit = [&](size_t base, uint64_t fields, uint64_t ends) {
        const uint64_t all = fields | ends;
        for (; ends; ends &= ends - 1) {
            const auto bit = static_cast<unsigned>(std::countr_zero(ends));
            const uint64_t upTo = below(bit) | uint64_t{1} << bit;
            out.records[records++] = static_cast<unsigned>(count + std::popcount(all & upTo));
        }
        unsigned* to = out.delimiters.data() + count;
        const auto found = static_cast<unsigned>(std::popcount(all));
        uint64_t rest = all;
        for (unsigned done = 0; done < found; done += at_once, to += at_once) {
            // What is too much is written over by the next block.
            for (unsigned i = 0; i < at_once; ++i, rest &= rest - 1) {
                to[i] = static_cast<unsigned>(base) + static_cast<unsigned>(std::countr_zero(rest));
            }
        }
        count += found;
    };

    Masks masks;
    bool atStart = true;  // the next byte begins a field
    for (size_t i = 0; i < length;) {
        if (i < masks.begin || i >= masks.end) {
            masks.begin = i / block_size * block_size;
            Classify(text, length, masks);
        }
        reserve();
        const size_t base = i / block_size * block_size;
        const BlockMasks& block = masks.blocks[(base - masks.begin) / block_size];
        const auto first = static_cast<unsigned>(i - base);
        const uint64_t ahead = ~below(first);
        const uint64_t fields = block.fields & ahead;
        const uint64_t ends = block.records & ahead;
        const uint64_t all = fields | ends;
        const uint64_t openers = block.quotes & ahead & (all << 1 | static_cast<uint64_t>(atStart) << first);
        size_t next = base + block_size;
        if (openers == 0) {
            emit(base, fields, ends);
            atStart = (all >> 63) != 0;
        } else {
            const auto opener = static_cast<unsigned>(std::countr_zero(openers));
            emit(base, fields & below(opener), ends & below(opener));
            next = SkipQuoted(text, length, base + opener);
            if (next == not_closed) {
                const bool runaway = length - (base + opener) > maxQuoted;
                if (!final && !runaway) break;
                next = base + opener + 1;
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
