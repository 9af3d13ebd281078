#pragma once

#include <map>
#include <set>

#include "os/DataFile.h"
#include "storage/TableSpace.h"

namespace qve {

/// A space in a directory of the file system.
class DirectoryTableSpace : public TableSpace {
public:
    /// A temporary directory, made when root() is first asked for. It is removed by rmdir of the empty path.
    DirectoryTableSpace();
    /// The directory `path`, which is not touched and need not exist.
    explicit DirectoryTableSpace(const std::wstring& path);

    const std::wstring& root() const override;
    void mkdir(const std::wstring& path) override;
    std::vector<std::wstring> listdir(const std::wstring& path) const override;
    void rmdir(const std::wstring& path) override;
    /// Throws QVE_InvalidArgument 40134 when the path exists.
    void create(const std::wstring& path) override;
    void rename(const std::wstring& from, const std::wstring& to) override;
    void unlink(const std::wstring& path) override;
    bool exists(const std::wstring& path) const override;
    bool isfile(const std::wstring& path) const override;
    bool isdir(const std::wstring& path) const override;
    /// Streams of one path share one open file; each has a window of its own and sees the size that the file has now.
    /// Files that are read stay mapped, and keep the index of a dictionary, until they are closed or others need the
    /// room: the next statement then finds their pages in place.
    RefCntPtr<DataStream> open(const std::wstring& path, bool writable) override;
    void close(const std::wstring& path) override;
    void closeall() override;

private:
    struct OpenFile {
        RefCntPtr<DataFile> file;
        RefCntPtr<DataStream> mapped;  // what readers get forks of; may be null
        uint64_t lastUse = 0;
        uint64_t cuts = 0;  // MappedFile::GetCutCount when it was mapped
    };

    std::wstring Resolve(const std::wstring& path) const;
    /// Notes that the entries of the path's directory changed, and have to reach the disk.
    void Touched(const std::wstring& path);

    /// Maps a file that is open for reading, and lets go of those that nobody used for longest.
    RefCntPtr<DataStream> Map(OpenFile& open);

    mutable std::wstring m_root;
    std::map<std::wstring, OpenFile> m_files;  // by the path as given
    std::set<std::wstring> m_written;          // files written since the last closeall, and closed
    std::set<std::wstring> m_changed;          // directories whose entries changed since the last closeall
    uint64_t m_uses = 0;
};

}  // namespace qve
