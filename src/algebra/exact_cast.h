#pragma once

#include "types/usratom.h"

namespace qve {

/// `value`, no null, as a column of `type` would store it; of no type when it would be cut or changed on the way.
usratom exact_cast(const usratom& value, const usrtype& type);

}  // namespace qve
