#pragma once

#include <string>

#include "commands/Statement.h"
#include "system/ProgressCallback.h"

namespace qve {

/// Verifies a database and lists what it finds: table "CHECK" with "CHECK_KIND" ("damage", "leftover", "removed",
/// "salvaged", "note"), "CHECK_PLACE" and "CHECK_FINDING". No row of the kind "damage" means that it is sound. The last
/// row is a note that tells how much was looked at.
class CheckDatabase : public Statement {
public:
    struct Options {
        bool removeLeftovers = false;
        std::wstring salvage;  ///< path of a database to be made of what can be read; empty for none
    };
    CheckDatabase(std::wstring path, Options options);

    void Accept(OperatorVisitor& visitor) override;
    RefCntPtr<Namespace> Execute(unsigned pageSize) override;

    /// Counts columns.
    const RefCntPtr<ProgressCallback>& GetProgressCallback() const { return m_progress; }

private:
    const std::wstring m_path;
    const Options m_options;
    const RefCntPtr<ProgressCallback> m_progress;
};

}  // namespace qve
