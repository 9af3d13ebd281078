#pragma once

#include <functional>
#include <string>

namespace qve {

class Column;

/// Reads all cells of a column and all entries of its dictionary. Gives what is wrong, empty when nothing is. Throws
/// what reading throws. `pause` is called now and then.
std::wstring VerifyColumn(Column& column, const std::function<void()>& pause);

}  // namespace qve
