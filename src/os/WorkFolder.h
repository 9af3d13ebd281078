#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace qve {

/// A claim on a directory: who holds it uses the directory, and nobody removes it as abandoned. It goes with the
/// process, however that ends. Move only.
class FolderClaim {
public:
    FolderClaim() = default;
    /// Takes the claim on a directory; IsHeld tells whether it was there and free.
    explicit FolderClaim(std::wstring_view path);
    ~FolderClaim();
    FolderClaim(FolderClaim&& other) noexcept;
    FolderClaim& operator=(FolderClaim&& other) noexcept;

    bool IsHeld() const { return m_descriptor >= 0; }

private:
    int m_descriptor = -1;
};

/// A directory for work in progress, which goes with its object, contents and all. What killed processes left of theirs
/// is removed when the next one is made beside it.
class WorkFolder {
public:
    /// Makes a directory in `parent`, whose name begins with `prefix`. Throws as OS does.
    explicit WorkFolder(const std::wstring& parent, const std::wstring& prefix = L"qve_work_");
    ~WorkFolder();
    WorkFolder(const WorkFolder&) = delete;
    WorkFolder& operator=(const WorkFolder&) = delete;

    const std::wstring& GetPath() const { return m_path; }

    /// The directories in `parent` whose names begin with `prefix` and that nobody claims. Throws as OS does.
    static std::vector<std::wstring> FindAbandoned(const std::wstring& parent,
                                                   const std::wstring& prefix = L"qve_work_");
    /// Removes them.
    static void RemoveAbandoned(const std::wstring& parent, const std::wstring& prefix) noexcept;

private:
    std::wstring m_path;
    FolderClaim m_claim;
};

}  // namespace qve
