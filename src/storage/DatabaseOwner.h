#pragma once

#include <memory>
#include <string>

#include "os/FileLock.h"

namespace qve {

/// The right of this process to write to a database. The first write takes it, and it lasts as long as some object of
/// the process that wrote to the database has it open; meanwhile other processes can only read. It goes with the
/// process, however that ends. Threads and databases of one process share the right and order their writes themselves.
class DatabaseOwner {
public:
    /// Takes or shares the right to write to the database with this lock file. Any thread may call it.
    /// @param root of the database, for messages
    /// Throws QVE_RuntimeError (status::DatabaseOwner_taken) while another process has it.
    static std::shared_ptr<const DatabaseOwner> Take(const FileLock& lock, const std::wstring& root);

    explicit DatabaseOwner(FileLock lock) : m_lock(std::move(lock)) {}

private:
    FileLock m_lock;  // a lock of its own, since it outlives the database that took it first
};

}  // namespace qve
