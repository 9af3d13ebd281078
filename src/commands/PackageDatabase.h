#pragma once

#include <functional>
#include <string>

#include "commands/Statement.h"
#include "storage/Database.h"
#include "system/ProgressCallback.h"

namespace qve {

/// Makes a package file of a database, or a directory of a package. With a target the source stays as it is. Without,
/// the result takes the source's place: it is written beside it as "<source>.pkg", the two change places (in one step
/// where the file system can), and the source goes, from "<source>.bak". A failure or a cancel leaves the source alone.
class PackageDatabase : public Statement {
public:
    /// Receives the database at the source's path after a conversion in place.
    using Reopen = std::function<void(RefCntPtr<Database>)>;

    /// @param path the target, which must not exist; empty: in place
    PackageDatabase(RefCntPtr<Database> database, bool pack, std::wstring path, Reopen reopen);

    void Accept(OperatorVisitor& visitor) override;
    RefCntPtr<Namespace> Execute(unsigned pageSize) override;

    /// Counts files.
    const RefCntPtr<ProgressCallback>& GetProgressCallback() const { return m_progress; }

private:
    void Convert(const std::wstring& target) const;
    void ConvertInPlace();

    RefCntPtr<Database> m_database;
    const bool m_pack;
    const std::wstring m_path;
    const Reopen m_reopen;
    const RefCntPtr<ProgressCallback> m_progress;
};

}  // namespace qve
