#include "os/SpillFile.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "os/OS.h"
#include "os/Path.h"
#include "os/status.h"
#include "system/QuillonException.h"

namespace qve {
namespace {

bool HasOpenFileWithoutName() {
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code gone;
        const std::string target = std::filesystem::read_symlink(entry, gone).string();
        if (target.starts_with(Path::utf8path(OS::gettempdir())) && target.ends_with(" (deleted)")) return true;
    }
    return false;
}

TEST(SpillFileTest, GivesBackWhatWasAppendedAndHasNoName) {
    SpillFile file;
    EXPECT_EQ(file.GetSize(), 0u);
    const std::string words(100000, 'w');
    EXPECT_EQ(file.Append("abc", 3), 0u);
    EXPECT_EQ(file.Append(words.data(), words.size()), 3u);
    EXPECT_EQ(file.Append("xyz", 3), words.size() + 3);
    EXPECT_TRUE(HasOpenFileWithoutName());

    std::string found(words.size() + 6, ' ');
    file.Read(0, found.data(), found.size());
    EXPECT_EQ(found, "abc" + words + "xyz");
    file.Read(words.size() + 3, found.data(), 2);
    EXPECT_EQ(found.substr(0, 2), "xy");
    try {
        file.Read(file.GetSize() - 1, found.data(), 2);
        ADD_FAILURE() << "bytes behind the end are read";
    } catch (const QVE_RuntimeError& error) {
        EXPECT_EQ(error.GetStatus(), status::SpillFile_Read);
    }
}

}  // namespace
}  // namespace qve
