#pragma once

#include <string>
#include <vector>

#include "algebra/DelegatedTable.h"
#include "system/ProgressCallback.h"

namespace qve {

class Database;

/// Builds a table and stores its columns in a database, as a table that exists there.
class Save : public DelegatedTable {
public:
    /// A column that the stored table has is replaced, one that it has not is created.
    Save(RefCntPtr<Table> delegate, RefCntPtr<Database> database, std::wstring schema, std::wstring table);
    ~Save() override;

    uint64_t Build(unsigned pageSize) override;
    /// To be set before Build, which then ends with CancelledException once `progress` says cancelled.
    void SetProgressCallback(RefCntPtr<ProgressCallback> progress) { m_progress = std::move(progress); }
    /// Drops the table that was saved, and with it its temporary streams.
    void ReleaseDelegate();

private:
    std::vector<RefCntPtr<Column>> ColumnsInOrder() const;

    const RefCntPtr<Database> m_database;
    const std::wstring m_schema;
    const std::wstring m_table;
    RefCntPtr<ProgressCallback> m_progress;
    bool m_built = false;
    uint64_t m_count = 0;
};

}  // namespace qve
