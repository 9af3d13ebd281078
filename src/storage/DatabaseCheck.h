#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "storage/SimpleDatabase.h"
#include "system/ProgressCallback.h"
#include "system/RefCntPtr.h"

namespace qve {

/// Verifies that a database is what its catalog says: every file is there, every cell can be read, every token has its
/// entry, columns of a table are of one length, nothing lies about that nobody knows. One thread.
class DatabaseCheck {
public:
    enum class Kind { damage, leftover, removed, salvaged, note };
    struct Finding {
        Kind kind;
        std::wstring place;
        std::wstring text;
    };
    static const wchar_t* NameOf(Kind kind);

    /// @param path a directory or a package file
    /// @param progress counts columns; null when nobody wants to know
    DatabaseCheck(std::wstring path, RefCntPtr<ProgressCallback> progress);

    /// Looks at everything. What is wrong is a finding and no exception. Throws Operator::CancelledException.
    void Verify();
    /// Removes what dead processes left: files and directories in the database that its catalog does not name, remains
    /// of dropped databases beside it, and temporary directories of processes that are no more.
    void RemoveLeftovers();
    /// Copies every table that can be read to a new database; of a table with damaged columns those that are sound and
    /// of the length that most of them have. Throws what making a database throws.
    void Salvage(const std::wstring& path);

    const std::vector<Finding>& GetFindings() const { return m_findings; }
    uint64_t GetTables() const { return m_tables; }
    uint64_t GetColumns() const { return m_columns; }

private:
    /// A column that was read from end to end.
    struct SoundColumn {
        std::wstring name;
        uint64_t rows;
    };
    using TableName = std::pair<std::wstring, std::wstring>;  // schema, table

    void Add(Kind kind, std::wstring place, std::wstring text);
    void Damage(std::wstring place, const std::exception& fault);
    bool Open();
    void CheckTable(const TableName& table);
    void CheckPropertyFile(const std::wstring& column, const TableName& table, const std::wstring& place);
    void FindLeftovers();
    void AddUnknownFiles();
    void FindNeighbours();
    void Step();

    const std::wstring m_path;
    const RefCntPtr<ProgressCallback> m_progress;
    RefCntPtr<SimpleDatabase> m_database;  // null when it cannot be opened
    std::map<TableName, std::vector<SoundColumn>> m_sound;
    std::vector<std::wstring> m_unknown;     // paths in the database that no catalog names
    std::vector<std::wstring> m_neighbours;  // paths outside
    std::vector<Finding> m_findings;
    uint64_t m_tables = 0;
    uint64_t m_columns = 0;
    uint64_t m_done = 0;
    uint64_t m_total = 0;
};

}  // namespace qve
