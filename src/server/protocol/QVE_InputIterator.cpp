#include "server/protocol/QVE_InputIterator.h"

#include <fmt/core.h>

#include <cstring>

#include "server/protocol/status.h"
#include "system/QuillonException.h"

namespace qve {
namespace {

std::size_t AlignUp(std::size_t index, std::size_t alignment) {
    return (index + alignment - 1) & ~(alignment - 1);
}

[[noreturn]] void ThrowValueOverrun(std::size_t index) {
    throw QVE_RuntimeError(status::QVE_InputIterator_ValueOverrun,
                           fmt::format("protocol error: QVE_Value decoding overrun (index={})", index));
}

std::uint32_t LoadU32(const std::uint8_t* from) {
    std::uint32_t value;
    std::memcpy(&value, from, sizeof(value));
    return value;
}

}  // namespace

template <class T>
T QVE_InputIterator::ReadAligned() {
    T value;
    std::memcpy(&value, ReadRaw(1, sizeof(T)), sizeof(T));
    return value;
}
template std::uint32_t QVE_InputIterator::ReadAligned();
template std::int32_t QVE_InputIterator::ReadAligned();
template std::uint64_t QVE_InputIterator::ReadAligned();

std::uint32_t QVE_InputIterator::ReadHeader(std::uint64_t& guid) {
    const std::uint32_t magic = ReadU32();
    if (magic != QVE_Message::s_magic) {
        throw QVE_RuntimeError(
            status::QVE_InputIterator_BadMagic,
            fmt::format("protocol error: bad magic number (expected={:x} actual={:x})", QVE_Message::s_magic, magic));
    }
    const std::uint32_t size = ReadU32();
    guid = ReadGuid();
    return size;
}

const std::uint8_t* QVE_InputIterator::ReadRaw(std::size_t count, std::size_t elemSize) {
    const std::size_t size = m_message.size();
    const std::size_t start = AlignUp(m_index, elemSize);
    if (count >= s_rawLimit || start > size || count > (size - start) / elemSize) {
        throw QVE_RuntimeError(status::QVE_InputIterator_Overrun,
                               fmt::format("protocol error: message decoding overrun (request.count={} "
                                           "request.elemSize={} message.index={} message.size={})",
                                           count, elemSize, m_index, size));
    }
    m_index = start + count * elemSize;
    return m_message.data() + start;
}

std::string_view QVE_InputIterator::ReadBytes() {
    const std::size_t start = m_index;
    const std::uint32_t count = ReadU32();
    try {
        return {reinterpret_cast<const char*>(ReadRaw(count, 1)), count};
    } catch (const QVE_RuntimeError&) {
        m_index = start;
        throw;
    }
}

std::u16string QVE_InputIterator::ReadString() {
    const std::size_t start = m_index;
    try {
        const std::uint32_t count = ReadU32();
        if (count == 0) {
            throw QVE_RuntimeError(status::QVE_InputIterator_StringLength, "protocol error: invalid string length");
        }
        const std::uint8_t* units = ReadRaw(count, sizeof(char16_t));
        if (units[2 * (count - 1)] != 0 || units[2 * (count - 1) + 1] != 0) {
            throw QVE_RuntimeError(status::QVE_InputIterator_StringTermination,
                                   "protocol error: string not null terminated");
        }
        std::u16string text(count - 1, u'\0');
        std::memcpy(text.data(), units, text.size() * sizeof(char16_t));
        return text;
    } catch (...) {
        m_index = start;
        throw;
    }
}

QVE_Value QVE_InputIterator::ReadValue() {
    const std::size_t size = m_message.size();
    const std::size_t index = AlignUp(m_index, 4);
    if (index > size || size - index < 4) ThrowValueOverrun(m_index);
    const std::uint8_t* at = m_message.data() + index;
    const std::uint32_t type = LoadU32(at);
    if (type & QVE_Value::s_null) {
        m_index = index + 4;
        return {type, 0, nullptr};
    }
    if (size - index < 8) ThrowValueOverrun(m_index);
    const std::uint32_t length = LoadU32(at + 4);
    const std::size_t start = QVE_Value::IsAlignedTo8(type) ? AlignUp(index + 8, 8) : index + 8;
    if (start > size || length > size - start) ThrowValueOverrun(m_index);
    m_index = start + length;
    return {type, length, m_message.data() + start};
}

void QVE_InputIterator::ReadValues(std::size_t count, QVE_Value* values) {
    const std::size_t start = m_index;
    try {
        for (std::size_t i = 0; i < count; ++i) values[i] = ReadValue();
    } catch (const QVE_RuntimeError&) {
        m_index = start;
        throw;
    }
}

QVE_PropertyList QVE_InputIterator::ReadProperties() {
    const std::size_t start = m_index;
    try {
        const std::uint32_t count = ReadU32();
        // A pair takes at least two type words: what cannot be there must not cost memory.
        if (count > GetRemaining() / 8) ReadRaw(count, 8);
        QVE_PropertyList properties;
        properties.reserve(count);
        for (std::uint32_t i = 0; i < count; ++i) {
            QVE_InterredValue key(ReadValue());
            properties.emplace_back(std::move(key), QVE_InterredValue(ReadValue()));
        }
        return properties;
    } catch (...) {
        m_index = start;
        throw;
    }
}

}  // namespace qve
