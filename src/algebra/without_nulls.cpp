#include "algebra/without_nulls.h"

#include "algebra/ColumnExp.h"
#include "algebra/Select.h"
#include "algebra/SelectExp.h"
#include "storage/Column.h"

namespace qve {

RefCntPtr<DataFlow> without_nulls(RefCntPtr<DataFlow> flow, const std::vector<std::wstring>& names) {
    for (const std::wstring& name : names) {
        const RefCntPtr<Column> column = flow->DescribeColumn(name);
        if (column->HasProperty(usrpropkey::not_null)) continue;
        flow = MakeRef<Select>(flow, MakeRef<SelectUnaryExp>(L"isnotnull", MakeRef<ColumnExp>(column)));
    }
    return flow;
}

}  // namespace qve
