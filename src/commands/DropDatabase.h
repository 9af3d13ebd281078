#pragma once

#include "commands/Statement.h"

namespace qve {

/// Removes a database. A file in its place that is no database is never deleted but moved to a folder of its own.
class DropDatabase : public Statement {
public:
    /// @param lostAndFound where such a file goes; empty to refuse it
    DropDatabase(std::wstring path, bool ifexists, bool cascade, std::wstring lostAndFound);

    void Accept(OperatorVisitor& visitor) override;
    RefCntPtr<Namespace> Execute(unsigned pageSize) override;

    const std::wstring& GetPath() const { return m_path; }
    bool DatabaseExists() const;

private:
    void MoveToLostAndFound() const;

    const std::wstring m_path;
    const bool m_ifexists;
    const bool m_cascade;
    const std::wstring m_lostAndFound;
};

}  // namespace qve
