#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "algebra/ColumnNames.h"
#include "algebra/Table.h"
#include "storage/Column.h"
#include "types/datetime.h"
#include "types/usrprops.h"

namespace qve {

/// What a statement lists, put together column by column into a table. All columns must be equally long; their order is
/// that in which they were added.
class Listing {
public:
    /// @param table the name of the table, with which the names of its columns begin
    explicit Listing(std::wstring table) : m_table(std::move(table)) {}

    /// Adds the column `<table>_<name>`.
    void AddTexts(const std::wstring& name, const std::vector<std::wstring>& values);
    /// A negative number stands for null.
    void AddNumbers(const std::wstring& name, const std::vector<long long>& values);
    void AddMoments(const std::wstring& name, const std::vector<datetime>& values);

    RefCntPtr<Table> Finish();

private:
    void Add(const std::wstring& name, usrprops properties, const void* cells, uint64_t bytes);

    const std::wstring m_table;
    ColumnMap m_columns;
};

}  // namespace qve
