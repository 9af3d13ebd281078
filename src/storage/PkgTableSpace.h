#pragma once

#include <map>
#include <mutex>
#include <string>

#include "storage/Package.h"
#include "storage/ReadOnlyTableSpace.h"

namespace qve {

/// The tree of a package file, as it lies in the file: a path is a range of bytes, and every stream is a window into
/// the one file. The file is opened and the nodes of its directories are read at the first call; the node of a file is
/// read when the file is opened. Operations throw as Package::Open. Any thread may call.
class PkgTableSpace final : public ReadOnlyTableSpace {
public:
    explicit PkgTableSpace(std::wstring path) : m_path(std::move(path)) {}

    /// The path of the package file.
    const std::wstring& root() const override { return m_path; }
    /// Throws QVE_RuntimeError (status::PkgTableSpace_listdir, "not a directory").
    std::vector<std::wstring> listdir(const std::wstring& path) const override;
    bool exists(const std::wstring& path) const override;
    bool isfile(const std::wstring& path) const override;
    bool isdir(const std::wstring& path) const override;
    /// Throws QVE_RuntimeError (status::PkgTableSpace_open, "not a file"), and as NotWritable for a writable stream.
    RefCntPtr<DataStream> open(const std::wstring& path, bool writable) override;

private:
    // With the mutex held.
    const RefCntPtr<Package::Node>& GetRootNode() const;
    const RefCntPtr<DataFile>& GetPackageFile() const;
    /// Null when there is nothing at the path.
    RefCntPtr<Package::Node> ResolveRelPath(const std::wstring& path) const;

    const std::wstring m_path;
    mutable std::mutex m_mutex;
    mutable RefCntPtr<DataFile> m_file;
    mutable RefCntPtr<Package::Node> m_root;
    // What readers get forks of, by the beginning of the data: pages and the index of a dictionary stay in place.
    std::map<uint64_t, RefCntPtr<DataStream>> m_streams;
    uint64_t m_mapped = 0;  // bytes of them
};

}  // namespace qve
