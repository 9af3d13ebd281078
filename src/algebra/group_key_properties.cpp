#include "algebra/group_key_properties.h"

#include "algebra/Namespace.h"
#include "storage/Column.h"

namespace qve {

usrprops group_key_properties(const Namespace& source, const ColumnNames& keys, const std::wstring& name, bool sorted) {
    usrprops properties = source.DescribeColumn(name)->GetProperties();
    // One row of each value is left: what was said of all rows no longer holds, but what bounds the values does.
    for (const usrpropkey key :
         {usrpropkey::encoding, usrpropkey::dense, usrpropkey::unique, usrpropkey::primary_key, usrpropkey::sum_value,
          usrpropkey::sum2_value, usrpropkey::count_value, usrpropkey::median_value, usrpropkey::generated_by}) {
        properties.erase(key);
    }
    properties.set(usrpropkey::name, name);
    properties.set(usrpropkey::storagetype, Column::storageCol);
    if (keys.size() == 1) {
        properties.set(usrpropkey::unique, true);
    } else if (!sorted) {
        // The first rows of several keys need not be in the order of any.
        for (const usrpropkey key : {usrpropkey::ordered, usrpropkey::sort_position, usrpropkey::sort_sense}) {
            properties.erase(key);
        }
    }
    return properties;
}

}  // namespace qve
