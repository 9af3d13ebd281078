#pragma once

namespace qve::status {

inline constexpr int NormaliseWide_Check = 40265;
inline constexpr int NormaliseWide_Normalise = 40266;

}  // namespace qve::status
