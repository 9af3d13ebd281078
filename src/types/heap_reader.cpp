#include "types/heap_reader.h"

#include <algorithm>

#include "types/usrtype.h"

namespace qve {

heap_reader::heap_reader(const usrheap* heap) : m_heap(heap) {
    if (!heap || !heap->stream()) return;
    m_prefix = heap->prefix_width();
    if (m_prefix == 0) m_stride = heap->type()->size();
    DataStream& stream = *heap->stream();
    const uint64_t size = stream.GetSize();
    if (size <= stream.GetPageLimit() && (stream.GetCursor() > 0 || stream.GetLimit() < size)) stream.Seek(0, size);
    look();
}

void heap_reader::look() const {
    DataStream& stream = *m_heap->stream();
    const uint64_t cursor = stream.GetCursor();
    const uint64_t end = cursor + stream.GetLimit();
    const char* const window = stream.GetInput(0);
    if (m_prefix == 0) {
        // Token k lies at k + 1 records.
        m_begin = cursor <= m_stride ? 0 : (cursor - 1) / m_stride;
        m_end = end / m_stride ? end / m_stride - 1 : 0;
        m_base = window + (static_cast<int64_t>(m_stride) - static_cast<int64_t>(cursor));
    } else {
        m_begin = std::max<uint64_t>(cursor, m_heap->first());
        m_end = end < m_prefix ? 0 : end - m_prefix + 1;
        m_base = window - cursor;
        m_bytes = end;
    }
    m_end = std::min<uint64_t>(m_end, m_heap->next());
    m_begin = std::min(m_begin, m_end);
}

std::string_view heap_reader::slow(unsigned long long token) const {
    if (!m_heap) return {};
    const std::string_view bytes = m_heap->bytes(token);
    if (m_heap->stream()) look();
    return bytes;
}

}  // namespace qve
