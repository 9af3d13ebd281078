#pragma once

namespace qve::status {

inline constexpr int SimpleLogger_SimpleLogger = 40463;

}  // namespace qve::status
