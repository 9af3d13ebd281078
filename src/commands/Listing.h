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
    /// How columns are named.
    enum class Names {
        withTable,  ///< `<table>_<name>`, as in the catalog
        plain,      ///< `<name>`
    };

    explicit Listing(std::wstring table, Names names = Names::withTable)
        : m_table(std::move(table)), m_prefix(names == Names::plain ? std::wstring() : m_table + L"_") {}

    void AddTexts(const std::wstring& name, const std::vector<std::wstring>& values);
    /// A negative number stands for null.
    void AddNumbers(const std::wstring& name, const std::vector<long long>& values);
    void AddFigures(const std::wstring& name, const std::vector<double>& values);
    void AddMoments(const std::wstring& name, const std::vector<datetime>& values);

    RefCntPtr<Table> Finish();

private:
    void Add(const std::wstring& name, usrprops properties, const void* cells, uint64_t bytes);

    /// The place and the name of the next column; sets them in its properties.
    std::wstring Place(const std::wstring& name, usrprops& properties) const;

    const std::wstring m_table;
    const std::wstring m_prefix;
    ColumnMap m_columns;
};

}  // namespace qve
