#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "server/protocol/QVE_Message.h"
#include "server/protocol/QVE_Value.h"

namespace qve {

/// Values for bulk transfer, in one message: a prefix, then values one after the other. An array is either open for
/// write and filled, or filled from a received message and read. Not for several threads at a time.
class QVE_ValueArray {
public:
    /// An array to be read; it is empty until Assign.
    QVE_ValueArray() = default;
    QVE_ValueArray(QVE_ValueArray&&) noexcept = default;
    QVE_ValueArray& operator=(QVE_ValueArray&&) noexcept = default;

    /// Opens the array for write: the values will follow a copy of `prefix`. Throws QVE_LogicError (40504) when values
    /// were written or received already.
    void SetPrefix(const QVE_Message& prefix);
    /// Opens the array for write, on a message of its own without prefix.
    void OpenForWrite();
    /// Makes this the array of `count` values that stand in `message` from `offset` on. Takes the message's content.
    /// Throws QVE_RuntimeError (70007) when they are not all there; the array is empty then.
    void Assign(QVE_Message& message, std::size_t offset, std::size_t count);

    /// Forgets the values; prefix, mode and memory stay.
    void Clear();

    /// Appends values. Throws QVE_LogicError (40505).
    void WriteValues(std::size_t count, const QVE_Value* values);
    void WriteValue(const QVE_Value& value) { WriteValues(1, &value); }

    /// The values that were received, one after the other, as views into the array. Good until the array changes.
    const std::vector<QVE_Value>& ReadValues() const noexcept { return m_values; }
    /// How many of the received values were taken, for consumers that take them bit by bit.
    std::size_t GetConsumed() const noexcept { return m_consumed; }
    /// Takes the next `count` values, or as many as there are; gives how many.
    std::size_t Consume(std::size_t count) noexcept;

    /// Values in the array, written or received.
    std::size_t GetNumValues() const noexcept { return m_count; }
    /// Bytes of the values, without the prefix.
    std::size_t GetSizeBytes() const noexcept { return m_body.size() - m_prefix.size(); }
    bool IsOpenForWrite() const noexcept { return m_openForWrite; }
    /// Prefix and values.
    QVE_Message& GetMessage() noexcept { return m_body; }
    const QVE_Message& GetMessage() const noexcept { return m_body; }

private:
    bool m_openForWrite = false;
    QVE_Message m_prefix;
    std::size_t m_count = 0;
    QVE_Message m_body;  // starts with a copy of the prefix, so that it can go out as it stands
    std::size_t m_consumed = 0;
    std::vector<QVE_Value> m_values;
};

}  // namespace qve
