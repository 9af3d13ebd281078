#pragma once

#include <string>
#include <vector>

#include "storage/stream/DataStream.h"
#include "system/RefCntObject.h"
#include "system/RefCntPtr.h"

namespace qve {

/// A small file system: the only way in which the catalog touches files. Paths are relative to the space; the empty
/// path is its root. Spaces take no locks: who shares one orders the calls. Failures of the system pass through.
class TableSpace : public RefCntObject {
public:
    /// Where the space lies on disk.
    virtual const std::wstring& root() const = 0;
    /// Makes one directory; the parent must exist.
    virtual void mkdir(const std::wstring& path) = 0;
    /// The names, not paths, of what a directory holds.
    virtual std::vector<std::wstring> listdir(const std::wstring& path) const = 0;
    /// Removes a directory with all that lies below it.
    virtual void rmdir(const std::wstring& path) = 0;
    /// Makes an empty file; one that exists is refused.
    virtual void create(const std::wstring& path) = 0;
    /// Moves a file over `to`, in one step where the space lies in a file system.
    virtual void rename(const std::wstring& from, const std::wstring& to) = 0;
    virtual void unlink(const std::wstring& path) = 0;
    virtual bool exists(const std::wstring& path) const = 0;
    virtual bool isfile(const std::wstring& path) const = 0;
    virtual bool isdir(const std::wstring& path) const = 0;
    /// A stream over the whole file as it is now.
    virtual RefCntPtr<DataStream> open(const std::wstring& path, bool writable) = 0;
    /// Releases what the space holds for the file.
    virtual void close(const std::wstring& path) = 0;
    /// The same for all files. What was written through the space has then reached the disk.
    virtual void closeall() = 0;
};

}  // namespace qve
