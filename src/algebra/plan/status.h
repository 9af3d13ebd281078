#pragma once

namespace qve::status {

inline constexpr int absent_operator = 40296;

}  // namespace qve::status
