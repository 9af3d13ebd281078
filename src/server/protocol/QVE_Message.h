#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace qve {

/// The buffer of one message: a header of 16 bytes and a body, or a body alone. Grows on demand and keeps its memory
/// when cleared; messages change hands by swap.
class QVE_Message {
public:
    /// Bytes of the header: magic u32, body size u32, session guid u64.
    static constexpr std::size_t s_headerSize = 16;
    static constexpr std::uint32_t s_magic = 0x0C0DA7E5;

    QVE_Message() = default;
    /// `size` zero bytes.
    explicit QVE_Message(std::size_t size) : m_size(size), m_bytes(size) {}
    QVE_Message(QVE_Message&& other) noexcept { swap(other); }
    QVE_Message& operator=(QVE_Message&& other) noexcept {
        swap(other);
        return *this;
    }
    QVE_Message(const QVE_Message&) = default;
    QVE_Message& operator=(const QVE_Message&) = default;

    std::size_t size() const noexcept { return m_size; }
    bool empty() const noexcept { return m_size == 0; }
    const std::uint8_t* data() const noexcept { return m_bytes.data(); }
    std::uint8_t* data() noexcept { return m_bytes.data(); }

    /// Empties the message; its memory stays.
    void clear() noexcept { m_size = 0; }
    /// New bytes are zero.
    void resize(std::size_t size);
    /// Makes room for `size` bytes in all.
    void reserve(std::size_t size) { m_bytes.reserve(size); }
    void swap(QVE_Message& other) noexcept {
        std::swap(m_size, other.m_size);
        m_bytes.swap(other.m_bytes);
    }

    /// Makes the message longer by `count` bytes of no particular content. The pointer to the first of them is good
    /// until the message grows again.
    std::uint8_t* Extend(std::size_t count) {
        const std::size_t start = m_size;
        if (m_bytes.size() - start < count) Grow(start + count);
        m_size = start + count;
        return m_bytes.data() + start;
    }

private:
    void Grow(std::size_t needed);

    std::size_t m_size = 0;  // at most m_bytes.size(): the vector keeps what a shorter message does not use
    std::vector<std::uint8_t> m_bytes;
};

}  // namespace qve
