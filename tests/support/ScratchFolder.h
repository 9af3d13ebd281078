#pragma once

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>

#include "os/OS.h"
#include "os/WorkFolder.h"

namespace qve::test {

/// A new folder for the files of a test, which goes with the object. What tests left that were killed goes when the
/// next one is made. With QVE_TEST_KEEP in the environment the folder stays.
class ScratchFolder {
public:
    explicit ScratchFolder(const std::filesystem::path& parent = std::filesystem::temp_directory_path()) {
        if (std::getenv("QVE_TEST_KEEP")) {
            m_path = OS::mkdtemp(parent.wstring(), L"qve_kept_");
            return;
        }
        m_folder = std::make_unique<WorkFolder>(parent.wstring(), L"qve_test_");
        m_path = m_folder->GetPath();
    }

    const std::filesystem::path& GetPath() const { return m_path; }
    /// The path of a file in it.
    std::string operator/(const std::string& name) const { return (m_path / name).string(); }

private:
    std::unique_ptr<WorkFolder> m_folder;
    std::filesystem::path m_path;
};

}  // namespace qve::test
