#pragma once

#include <string>
#include <vector>

#include "algebra/DataFlow.h"

namespace qve {

/// The rows of a flow without a null in one of the columns `names`; the flow itself where none may be.
RefCntPtr<DataFlow> without_nulls(RefCntPtr<DataFlow> flow, const std::vector<std::wstring>& names);

}  // namespace qve
