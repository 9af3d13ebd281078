#pragma once

#include <cstdint>
#include <string>

#include "os/DataFile.h"
#include "system/RefCntObject.h"
#include "system/RefCntPtr.h"

namespace qve::Server {

/// A database file on its way from a client to the disk. Until it is committed, what has arrived lies at the path,
/// where a later upload may take its place; a whole database there is never overwritten. One thread at a time.
class Upload : public RefCntObject {
public:
    /// Makes the file. Throws QVE_RuntimeError (status::Upload_exists) when a database lies at the path,
    /// (status::Upload_create) when the file cannot be made.
    explicit Upload(std::wstring path);

    const std::wstring& GetPath() const { return m_path; }
    /// The bytes that will come. Throws QVE_RuntimeError 40439 after the commit.
    void SetSize(std::uint64_t size);
    /// Appends bytes. Throws QVE_RuntimeError 40438 after the commit, and what the disk raises.
    void Send(std::size_t count, const void* bytes);
    /// Ends the file, which is on the disk then. When not all has come, or too much, the file goes and QVE_RuntimeError
    /// 40437 is thrown; 40436 when it is committed already.
    void Commit();

private:
    void RequireOpen(int status) const;
    void Delete() const noexcept;

    const std::wstring m_path;
    std::uint64_t m_expected = 0;
    RefCntPtr<DataFile> m_file;  // null: committed
};

}  // namespace qve::Server
