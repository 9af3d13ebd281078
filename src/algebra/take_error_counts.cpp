#include "algebra/take_error_counts.h"

#include "storage/Column.h"

namespace qve {

void TakeErrorCounts(const Column& source, Column& column) {
    for (const usrpropkey key : {usrpropkey::count_errors, usrpropkey::first_error, usrpropkey::last_error}) {
        if (const std::wstring* count = source.GetProperties().get(key)) column.SetProperty(key, *count);
    }
}

}  // namespace qve
