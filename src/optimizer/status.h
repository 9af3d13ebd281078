#pragma once

namespace qve::status {

inline constexpr int OptQueryCopier_VisitRestrict = 48016;  // "Restrict operator not expected"
inline constexpr int OptQueryCopier_Raise = 49038;          // what a pass finds wrong with a query

}  // namespace qve::status
