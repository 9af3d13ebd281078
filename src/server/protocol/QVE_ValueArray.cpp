#include "server/protocol/QVE_ValueArray.h"

#include <algorithm>
#include <cstring>

#include "server/protocol/QVE_InputIterator.h"
#include "server/protocol/QVE_OutputIterator.h"
#include "server/protocol/status.h"
#include "system/QuillonException.h"

namespace qve {

void QVE_ValueArray::SetPrefix(const QVE_Message& prefix) {
    if (m_count != 0) {
        throw QVE_LogicError(status::QVE_ValueArray_SetPrefix, "valuearray not opened for write");
    }
    m_prefix = prefix;
    m_openForWrite = true;
    Clear();
}

void QVE_ValueArray::OpenForWrite() {
    SetPrefix(QVE_Message());
}

void QVE_ValueArray::Assign(QVE_Message& message, std::size_t offset, std::size_t count) {
    m_openForWrite = false;
    m_prefix.clear();
    m_body.swap(message);
    m_count = 0;
    m_consumed = 0;
    m_values.clear();
    QVE_InputIterator iterator(m_body);
    iterator.ReadRaw(offset, 1);
    // A value takes at least its type word: what cannot be there must not cost memory.
    if (count > iterator.GetRemaining() / 4 + 1) {
        throw QVE_RuntimeError(status::QVE_InputIterator_ValueOverrun,
                               "protocol error: QVE_Value decoding overrun (index=" + std::to_string(offset) + ")");
    }
    m_values.resize(count);
    try {
        iterator.ReadValues(count, m_values.data());
    } catch (const QVE_RuntimeError&) {
        m_values.clear();
        throw;
    }
    m_count = count;
}

void QVE_ValueArray::Clear() {
    m_count = 0;
    m_consumed = 0;
    m_values.clear();
    m_body.clear();
    if (!m_prefix.empty()) std::memcpy(m_body.Extend(m_prefix.size()), m_prefix.data(), m_prefix.size());
}

void QVE_ValueArray::WriteValues(std::size_t count, const QVE_Value* values) {
    if (!m_openForWrite) {
        throw QVE_LogicError(status::QVE_ValueArray_WriteValues, "valuearray not opened for write");
    }
    QVE_OutputIterator(m_body).WriteValues(count, values);
    m_count += count;
}

std::size_t QVE_ValueArray::Consume(std::size_t count) noexcept {
    const std::size_t taken = std::min(count, m_values.size() - m_consumed);
    m_consumed += taken;
    return taken;
}

}  // namespace qve
