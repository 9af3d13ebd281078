#pragma once

#include <atomic>
#include <map>

#include "storage/TableSpace.h"

namespace qve {

/// A space whose files are temporary streams: in memory up to their page limit, on disk beyond it.
class MemoryDirectoryTableSpace : public TableSpace {
public:
    /// No path; the root does not exist before root() is asked for.
    MemoryDirectoryTableSpace();
    /// The root exists. The path is only a name.
    explicit MemoryDirectoryTableSpace(const std::wstring& path);

    /// The setting `use-memory-tablespace`: databases live in memory.
    static std::atomic<bool> s_useMemoryDirectoryTableSpace;

    /// Without a path this makes a temporary directory on disk.
    const std::wstring& root() const override;
    /// Throws QVE_InvalidArgument (status::MemoryDirectoryTableSpace_mkdir) when the path exists.
    void mkdir(const std::wstring& path) override;
    std::vector<std::wstring> listdir(const std::wstring& path) const override;
    void rmdir(const std::wstring& path) override;
    /// Throws QVE_InvalidArgument 40698 when the path exists.
    void create(const std::wstring& path) override;
    void rename(const std::wstring& from, const std::wstring& to) override;
    void unlink(const std::wstring& path) override;
    bool exists(const std::wstring& path) const override;
    bool isfile(const std::wstring& path) const override;
    bool isdir(const std::wstring& path) const override;
    /// All callers share the one stream, whatever `writable` says. Throws QVE_InvalidArgument 40699 for an unknown
    /// path.
    RefCntPtr<DataStream> open(const std::wstring& path, bool writable) override;
    void close(const std::wstring&) override {}
    void closeall() override {}

private:
    void InsertDirectory(const std::wstring& path);
    void DeleteDirectory(const std::wstring& path);

    mutable std::wstring m_root;
    std::map<std::wstring, RefCntPtr<DataStream>> m_entries;  // by normalised path; null for a directory
    std::multimap<std::wstring, std::wstring> m_directories;  // directory to the names in it
    mutable bool m_rootExists;
    mutable bool m_rootOnDisk = false;  // root() made the directory
};

}  // namespace qve
