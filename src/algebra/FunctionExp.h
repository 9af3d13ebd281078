#pragma once

#include <string>

#include "algebra/ColumnExp.h"

namespace qve {

/// A function without arguments that the input itself answers: it is the input's column of that name, as ".RANK" is of
/// a table, under another name.
class FunctionExp : public ColumnExp {
public:
    FunctionExp(const std::wstring& name, const std::wstring& function) : ColumnExp(name, function) {}
};

}  // namespace qve
