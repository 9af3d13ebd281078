#include "commands/Statement.h"

#include "commands/status.h"
#include "storage/Column.h"
#include "system/QuillonException.h"

namespace qve {

ColumnNames Statement::GetColumnNames() const {
    return {};
}

RefCntPtr<Column> Statement::GetColumn(const std::wstring&) const {
    throw QVE_OutOfRange(status::Statement_GetColumn, "Statement::GetColumn");
}

unsigned Statement::GetColumnCount() const {
    return 0;
}

RefCntPtr<Column> Statement::DescribeColumn(const std::wstring&) const {
    throw QVE_OutOfRange(status::Statement_DescribeColumn, "Statement::DescribeColumn");
}

}  // namespace qve
