#pragma once

#include <cstdint>

namespace qve {

/// A temporary file without a name, for what an operator sets aside because it exceeds the memory budget. It is made at
/// the first write, and gone with the object or with the process, however that ends. What is written and read goes
/// through the system's cache and takes none of the process's memory. One thread at a time.
class SpillFile {
public:
    SpillFile() = default;
    ~SpillFile();
    SpillFile(const SpillFile&) = delete;
    SpillFile& operator=(const SpillFile&) = delete;

    /// Appends bytes and returns the position of the first. Throws QVE_RuntimeError 100 when the disk is full, and
    /// 40476.
    uint64_t Append(const void* bytes, uint64_t size);
    /// Reads `size` bytes that were appended, from `position` on. Throws QVE_RuntimeError 40477.
    void Read(uint64_t position, void* bytes, uint64_t size) const;

    uint64_t GetSize() const { return m_size; }

    /// The file descriptor of a new temporary file without a name. Throws what Append throws.
    static int Open();

private:
    int m_file = -1;
    uint64_t m_size = 0;
};

}  // namespace qve
