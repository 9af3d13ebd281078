#include "server/protocol/QVE_OutputIterator.h"

#include <cstring>
#include <limits>
#include <string>

#include "server/protocol/status.h"
#include "system/QuillonException.h"
#include "system/unicode.h"

namespace qve {
namespace {

constexpr std::size_t s_maxSize = std::numeric_limits<std::uint32_t>::max();

std::size_t Padding(std::size_t index, std::size_t alignment) {
    return (0 - index) & (alignment - 1);
}

/// The payload's size is almost always one of few, for which the copy is one move.
void CopyPayload(std::uint8_t* to, const void* from, std::size_t size) {
    switch (size) {
        case 0:
            break;
        case 1:
            std::memcpy(to, from, 1);
            break;
        case 4:
            std::memcpy(to, from, 4);
            break;
        case 8:
            std::memcpy(to, from, 8);
            break;
        default:
            std::memcpy(to, from, size);
    }
}

}  // namespace

template <class T>
void QVE_OutputIterator::WriteAligned(T value) {
    const std::size_t padding = Padding(m_message.size(), sizeof(T));
    std::uint8_t* to = m_message.Extend(padding + sizeof(T));
    std::memset(to, 0, padding);
    std::memcpy(to + padding, &value, sizeof(T));
}
template void QVE_OutputIterator::WriteAligned(std::uint32_t);
template void QVE_OutputIterator::WriteAligned(std::int32_t);
template void QVE_OutputIterator::WriteAligned(std::uint64_t);

void QVE_OutputIterator::WriteHeader() {
    WriteU32(QVE_Message::s_magic);
    WriteU32(0xFFFFFFFF);
    WriteU64(0xFFFFFFFFFFFFFFFF);
}

void QVE_OutputIterator::WriteRaw(const void* data, std::size_t count, std::size_t elemSize) {
    const std::size_t padding = Padding(m_message.size(), elemSize);
    std::uint8_t* to = m_message.Extend(padding + count * elemSize);
    std::memset(to, 0, padding);
    if (count != 0) std::memcpy(to + padding, data, count * elemSize);
}

void QVE_OutputIterator::WriteBytes(std::size_t count, const void* data) {
    if (count > s_maxSize) throw QVE_RangeError(status::QVE_Message_TooLong, "protocol error: message too long");
    WriteU32(static_cast<std::uint32_t>(count));
    WriteRaw(data, count, 1);
}

void QVE_OutputIterator::WriteString(std::u16string_view text) {
    text = text.substr(0, text.find(u'\0'));
    if (text.size() >= s_maxSize) throw QVE_RangeError(status::QVE_Message_TooLong, "protocol error: message too long");
    WriteU32(static_cast<std::uint32_t>(text.size() + 1));
    WriteRaw(text.data(), text.size(), sizeof(char16_t));
    const char16_t terminator = 0;
    WriteRaw(&terminator, 1, sizeof(terminator));
}

void QVE_OutputIterator::WriteString(std::wstring_view text) {
    WriteString(to_utf16(text));
}

void QVE_OutputIterator::WriteString(std::string_view utf8) {
    WriteString(to_utf16(utf8));
}

void QVE_OutputIterator::WriteValue(const QVE_Value& value) {
    WriteValues(1, &value);
}

void QVE_OutputIterator::WriteValues(std::size_t count, const QVE_Value* values) {
    for (const QVE_Value* value = values; value != values + count; ++value) {
        const std::size_t index = m_message.size();
        const std::size_t typePadding = Padding(index, 4);
        if (value->IsNull()) {
            std::uint8_t* to = m_message.Extend(typePadding + 4);
            std::memset(to, 0, typePadding);
            std::memcpy(to + typePadding, &value->type, 4);
            continue;
        }
        const std::size_t prefix = typePadding + 8;
        const std::size_t payloadPadding = QVE_Value::IsAlignedTo8(value->type) ? Padding(index + prefix, 8) : 0;
        std::uint8_t* to = m_message.Extend(prefix + payloadPadding + value->size);
        std::memset(to, 0, typePadding);
        std::memcpy(to + typePadding, &value->type, 4);
        std::memcpy(to + typePadding + 4, &value->size, 4);
        std::memset(to + prefix, 0, payloadPadding);
        CopyPayload(to + prefix + payloadPadding, value->data, value->size);
    }
}

void QVE_OutputIterator::WriteProperties(const QVE_PropertyList& properties) {
    WriteU32(static_cast<std::uint32_t>(properties.size()));
    for (const auto& [key, value] : properties) {
        WriteValue(key.GetValue());
        WriteValue(value.GetValue());
    }
}

void QVE_OutputIterator::PatchHeader(QVE_Message& message, std::uint64_t guid) {
    const std::size_t body = message.size() - QVE_Message::s_headerSize;
    if (body > s_maxSize) throw QVE_RangeError(status::QVE_Message_TooLong, "protocol error: message too long");
    PatchU32(message, 4, static_cast<std::uint32_t>(body));
    std::memcpy(message.data() + 8, &guid, sizeof(guid));
}

void QVE_OutputIterator::PatchU32(QVE_Message& message, std::size_t offset, std::uint32_t value) {
    std::memcpy(message.data() + offset, &value, sizeof(value));
}

}  // namespace qve
