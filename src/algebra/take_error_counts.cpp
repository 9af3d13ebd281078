#include "algebra/take_error_counts.h"

#include "storage/Column.h"

namespace qve {

void TakeErrorCounts(const Column& source, Column& column) {
    for (const usrpropkey key : {usrpropkey::count_errors, usrpropkey::first_error, usrpropkey::last_error}) {
        if (const std::wstring* count = source.GetProperties().get(key)) column.SetProperty(key, *count);
    }
}

void AddErrorCounts(const Column& source, uint64_t firstRow, Column& column) {
    const usrprops& found = source.GetProperties();
    const uint64_t count = found.number(usrpropkey::count_errors);
    if (count == 0) return;
    const auto place = [&](usrpropkey key) { return std::to_wstring(firstRow + found.number(key)); };
    const uint64_t before = column.GetProperties().number(usrpropkey::count_errors);
    column.SetProperty(usrpropkey::count_errors, std::to_wstring(before + count));
    if (before == 0) column.SetProperty(usrpropkey::first_error, place(usrpropkey::first_error));
    column.SetProperty(usrpropkey::last_error, place(usrpropkey::last_error));
}

}  // namespace qve
