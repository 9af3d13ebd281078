#include "algebra/packed_keys.h"

#include <algorithm>

#include "algebra/ColumnExp.h"
#include "algebra/HashExp.h"
#include "algebra/Namespace.h"
#include "storage/Column.h"
#include "system/QuillonException.h"

namespace qve {

bool cells_are_keys(const Column& column) {
    if (column.GetStorageName() != Column::storageCol) return false;
    if (column.IsCompressed()) return column.HasProperty(usrpropkey::distinct);
    return column.GetDataType() != DataType::real && column.GetDataType() != DataType::usr &&
           column.GetDataType() != DataType::spatial;
}

RefCntPtr<Exp> resolve_packed_keys(const Namespace& input, const std::vector<std::wstring>& keys, unsigned bits,
                                   const std::wstring& name) {
    unsigned used = 0;
    for (const std::wstring& key : keys) {
        const RefCntPtr<Column> column = input.DescribeColumn(key);
        if (!cells_are_keys(*column)) return nullptr;
        used += column->GetTokenSize() * 8;
    }
    if (keys.empty() || used > bits) return nullptr;
    RefCntPtr<Exp> packed;
    if (keys.size() == 1) {
        packed = MakeRef<ColumnExp>(input.DescribeColumn(keys.front()));
    } else {
        RefCntPtr<HashExp> chain;
        for (const std::wstring& key : keys) {
            chain = MakeRef<HashExp>(name, chain ? L"radixgrp" : L"radixhash",
                                     MakeRef<ColumnExp>(input.DescribeColumn(key)), true, chain);
        }
        packed = chain;
    }
    try {
        packed->AllocateColumn(&input);
    } catch (const QVE_InvalidArgument&) {
        return nullptr;  // no kernel for one of the types
    }
    return packed;
}

}  // namespace qve
