#pragma once

#include <string>

#include "client/qve.h"

namespace qve::cli {

/// The value as UTF-8 text: numbers in the shortest form that reads back the same, dates as "2020-02-29", datetimes
/// with a time behind, durations as "-1:02:03:04". Empty for a null.
std::string ValueText(const QVE_Value& value);

/// Whether values of a type are printed flush right.
bool IsNumber(uint32_t type);

}  // namespace qve::cli
