#include "vql/DescribeVQLTable.h"

#include "storage/DatabaseSchema.h"

namespace qve {

RefCntPtr<VQLTable> DescribeVQLTable(const VQLIdentifier& name, const DatabaseSchema& schema, const std::wstring& table,
                                     SymbolDictionary& dictionary) {
    VQLColumnSpace::Columns columns;
    for (const std::wstring& column : schema.GetColumnNames(table)) {
        usrprops properties = schema.DescribeColumn(table, column);
        properties.set(usrpropkey::ordinal, columns.size());  // results list columns in the catalog's order
        const VQLDataType type = VQLDataTypeFromProps(properties);
        columns.push_back(MakeRef<VQLColumn>(VQLIdentifier::Unquoted(column, dictionary), type, std::move(properties)));
    }
    return MakeRef<VQLTable>(name, MakeRef<VQLColumnSpace>(std::move(columns)));
}

}  // namespace qve
