#pragma once

#include <string>

#include "algebra/Exp.h"

namespace qve {

/// Calls of the operation `op` by the number of their arguments, each without a name and not bound yet: of a map, a
/// select and an aggregate kernel. Null when no kernel of the family has so many.
RefCntPtr<Exp> MakeMapCall(const std::wstring& op, const Exp::Arguments& arguments);
RefCntPtr<Exp> MakeSelectCall(const std::wstring& op, const Exp::Arguments& arguments);
RefCntPtr<Exp> MakeAggregateCall(const std::wstring& op, const Exp::Arguments& arguments);

}  // namespace qve
