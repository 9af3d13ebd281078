#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

namespace qve {

/// Advisory locks that hold between processes and between objects of one process, and three numbers that all of them
/// see. They lie in one small file: each lock is a numbered slot of it. A lock goes with its object, also when the
/// process is killed. Two objects exclude each other also within a thread; the calls of one object do not, so threads
/// that share one order them themselves.
class FileLock {
public:
    static constexpr unsigned slots = 16;

    FileLock() = default;
    /// Opens the file; with `create`, makes it when it is missing. A file that may only be read takes shared locks
    /// only. When it cannot be opened the object is closed.
    FileLock(std::wstring_view path, bool create);
    ~FileLock();
    FileLock(FileLock&& other) noexcept;
    FileLock& operator=(FileLock&& other) noexcept;

    bool IsOpen() const { return m_descriptor >= 0; }
    bool IsWritable() const { return m_writable; }
    const std::wstring& GetPath() const { return m_path; }

    /// Device and number of the file that is open: another file at the same path has another one.
    using Identity = std::pair<uint64_t, uint64_t>;
    Identity GetIdentity() const;
    /// Whether the file that is open still lies at the path.
    bool IsCurrent() const;

    /// Waits for a slot. A lock that is held is changed to the new kind. Throws QVE_RuntimeError
    /// (status::FileLock_Lock).
    void Lock(unsigned slot, bool exclusive);
    /// False when another object holds the slot.
    bool TryLock(unsigned slot, bool exclusive);
    void Unlock(unsigned slot) noexcept;

    /// The counter; 0 in a new file.
    uint64_t ReadCounter() const;
    void WriteCounter(uint64_t value);
    /// The process that last said that it owns what the locks guard; 0 in a new file. For messages only.
    uint64_t ReadOwner() const;
    void WriteOwner(uint64_t process);
    /// The run of the machine (BootNumber) in which what the locks guard was last put in order; 0 in a new file.
    uint64_t ReadBoot() const;
    void WriteBoot(uint64_t boot);

private:
    bool Set(unsigned slot, short kind, bool wait);
    uint64_t ReadNumber(unsigned place) const;
    void WriteNumber(unsigned place, uint64_t value);

    int m_descriptor = -1;
    bool m_writable = false;
    std::wstring m_path;
};

}  // namespace qve
