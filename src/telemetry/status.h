#pragma once

namespace qve::status {

inline constexpr int SimpleLogger_SimpleLogger = 40503;

}  // namespace qve::status
