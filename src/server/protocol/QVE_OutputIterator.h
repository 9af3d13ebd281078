#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "server/protocol/QVE_Command.h"
#include "server/protocol/QVE_InterredValue.h"
#include "server/protocol/QVE_Message.h"
#include "server/protocol/QVE_Value.h"

namespace qve {

/// Appends to a message. Every field is aligned, from the start of the message, to its own size by zero bytes before
/// it. The message must outlive the iterator.
class QVE_OutputIterator {
public:
    explicit QVE_OutputIterator(QVE_Message& message) noexcept : m_message(message) {}

    /// Appends a header whose body size and guid are placeholders until PatchHeader.
    void WriteHeader();
    void WriteU32(std::uint32_t value) { WriteAligned(value); }
    void WriteU64(std::uint64_t value) { WriteAligned(value); }
    void WriteSize(std::uint32_t value) { WriteAligned(value); }
    void WriteGuid(std::uint64_t value) { WriteAligned(value); }
    void WriteStatus(std::int32_t value) { WriteAligned(value); }
    void WriteCommand(QVE_Command value) { WriteAligned(static_cast<std::uint32_t>(value)); }
    /// Aligns to `elemSize` (a power of two) and copies `count * elemSize` bytes.
    void WriteRaw(const void* data, std::size_t count, std::size_t elemSize);
    /// A u32 count and then the bytes. Throws QVE_RangeError (40431) above 4 GiB.
    void WriteBytes(std::size_t count, const void* data);
    /// The text up to its first NUL: a u32 count of code units with the terminating NUL, and the code units.
    void WriteString(std::u16string_view text);
    void WriteString(std::wstring_view text);
    void WriteString(std::string_view utf8);
    void WriteValue(const QVE_Value& value);
    /// A run of values without a count of its own.
    void WriteValues(std::size_t count, const QVE_Value* values);
    void WriteProperties(const QVE_PropertyList& properties);

    /// Sets body size and guid of a finished message that starts with a header. Throws QVE_RangeError (40431) when the
    /// body does not fit its 32-bit size.
    static void PatchHeader(QVE_Message& message, std::uint64_t guid);
    /// Replaces the u32 that was written at `offset`.
    static void PatchU32(QVE_Message& message, std::size_t offset, std::uint32_t value);

private:
    template <class T>
    void WriteAligned(T value);

    QVE_Message& m_message;
};

}  // namespace qve
