#pragma once

#include "commands/Statement.h"

namespace qve {

/// Lists the databases in a folder: table "DATABASES" with "DATABASES_NAME", the path below the folder,
/// "DATABASES_SIZE", the bytes of its files, and "DATABASES_MTIME", when its catalog was changed last, in UTC.
class ShowDatabases : public Statement {
public:
    /// @param cascade look into the folders of the folder too
    ShowDatabases(std::wstring path, bool cascade);

    void Accept(OperatorVisitor& visitor) override;
    /// Raises QVE_RuntimeError (status::ShowDatabases_path) when the path is no folder.
    RefCntPtr<Namespace> Execute(unsigned pageSize) override;

private:
    const std::wstring m_path;
    const bool m_cascade;
};

}  // namespace qve
