#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "server/protocol/QVE_Command.h"
#include "server/protocol/QVE_InterredValue.h"
#include "server/protocol/QVE_Message.h"
#include "server/protocol/QVE_Value.h"

namespace qve {

/// Reads a message from its start. Nothing that a peer may send leads beyond the message: every operation throws
/// QVE_RuntimeError with the number given, and the index stays where it was.
/// The message must outlive the iterator and all views that it gave out.
class QVE_InputIterator {
public:
    /// A ReadRaw of this many elements or more is refused before any arithmetic.
    static constexpr std::size_t s_rawLimit = 0x0FFF0001;

    explicit QVE_InputIterator(const QVE_Message& message) noexcept : m_message(message) {}

    /// Reads a header; gives the body size and stores the guid. Throws 70003 on a wrong magic.
    std::uint32_t ReadHeader(std::uint64_t& guid);
    /// Aligns to `elemSize` (a power of two) and passes over `count` elements; gives a pointer to them. Throws 70004.
    const std::uint8_t* ReadRaw(std::size_t count, std::size_t elemSize);
    std::uint32_t ReadU32() { return ReadAligned<std::uint32_t>(); }
    std::uint64_t ReadU64() { return ReadAligned<std::uint64_t>(); }
    std::uint32_t ReadSize() { return ReadAligned<std::uint32_t>(); }
    std::uint64_t ReadGuid() { return ReadAligned<std::uint64_t>(); }
    std::int32_t ReadStatus() { return ReadAligned<std::int32_t>(); }
    QVE_Command ReadCommand() { return static_cast<QVE_Command>(ReadAligned<std::uint32_t>()); }
    /// The mirror of WriteBytes: a view into the message.
    std::string_view ReadBytes();
    /// Throws 70005 for a count of 0, 70006 without terminating NUL. The NUL is not part of the result.
    std::u16string ReadString();
    /// Throws 70007.
    QVE_Value ReadValue();
    /// Reads a run of values; their payloads point into the message. Throws 70007.
    void ReadValues(std::size_t count, QVE_Value* values);
    /// Throws 70004 for a count that the message cannot hold.
    QVE_PropertyList ReadProperties();

    std::size_t GetIndex() const noexcept { return m_index; }
    /// Bytes after the index.
    std::size_t GetRemaining() const noexcept { return m_message.size() - m_index; }
    const QVE_Message& GetMessage() const noexcept { return m_message; }

private:
    template <class T>
    T ReadAligned();

    const QVE_Message& m_message;
    std::size_t m_index = 0;
};

}  // namespace qve
