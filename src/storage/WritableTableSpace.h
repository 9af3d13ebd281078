#pragma once

#include <unordered_set>

#include "storage/TableSpace.h"

namespace qve {

/// Makes an immutable base writable: what is written lies in an overlay, what is removed from the base is hidden.
/// Nothing is ever written to the base. The overlay, and with it every change, goes with the object.
class WritableTableSpace : public TableSpace {
public:
    explicit WritableTableSpace(RefCntPtr<TableSpace> base);
    ~WritableTableSpace() override;

    /// The base's root until the first change, then the overlay's.
    const std::wstring& root() const override;
    void mkdir(const std::wstring& path) override;
    /// Base and overlay together, sorted, where both have the directory.
    std::vector<std::wstring> listdir(const std::wstring& path) const override;
    void rmdir(const std::wstring& path) override;
    void create(const std::wstring& path) override;
    /// A file of the base is copied into the overlay and hidden.
    void rename(const std::wstring& from, const std::wstring& to) override;
    void unlink(const std::wstring& path) override;
    bool exists(const std::wstring& path) const override;
    bool isfile(const std::wstring& path) const override;
    bool isdir(const std::wstring& path) const override;
    /// Opening a file of the base to write copies it into the overlay first.
    RefCntPtr<DataStream> open(const std::wstring& path, bool writable) override;
    void close(const std::wstring& path) override;
    void closeall() override;
    const RefCntPtr<TableSpace>& GetBase() const { return m_base; }
    /// Makes a directory that exists here exist in the overlay too.
    virtual void mkdirw(const std::wstring& directory);

private:
    bool IsHidden(const std::wstring& path) const { return m_hidden.count(path) != 0; }
    bool IsVisibleInBase(const std::wstring& path) const;

    RefCntPtr<TableSpace> m_base;
    RefCntPtr<TableSpace> m_overlay;
    std::unordered_set<std::wstring> m_hidden;  // paths of the base that count as gone
    bool m_modified = false;
};

}  // namespace qve
