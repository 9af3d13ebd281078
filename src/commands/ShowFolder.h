#pragma once

#include <string_view>
#include <vector>

#include "commands/Statement.h"

namespace qve {

/// Lists what lies in a folder: table "FOLDER" with "FOLDER_NAME", the path below the folder, "FOLDER_TYPE" ("file",
/// "folder" or "database"), "FOLDER_SIZE" (bytes; null for a folder), "FOLDER_MTIME" in UTC and, when asked for,
/// "FOLDER_COUNT", how many entries a folder has.
class ShowFolder : public Statement {
public:
    static constexpr unsigned cascade = 1;  ///< also what lies in the folders of the folder
    static constexpr unsigned counts = 2;   ///< with "FOLDER_COUNT"

    /// @param like what the names, without their folders, must match: "%" stands for any text, "_" for any character,
    /// "\" takes the next character as it is; empty for all
    ShowFolder(std::wstring path, std::wstring like, unsigned options);

    void Accept(OperatorVisitor& visitor) override;
    /// Raises QVE_RuntimeError (status::ShowFolder_path) when the path is no folder.
    RefCntPtr<Namespace> Execute(unsigned pageSize) override;

    /// Whether a name matches the pattern.
    bool Matches(std::wstring_view name) const;

private:
    RefCntPtr<Namespace> Enumerate() const;
    /// The number of entries of a folder of the folder; -1 for a file.
    long long GetCount(const std::wstring& name, bool directory) const;

    const std::wstring m_path;
    const std::wstring m_like;
    const unsigned m_options;
};

}  // namespace qve
