#pragma once

namespace qve::status {

inline constexpr int NormaliseWide_Check = 40406;
inline constexpr int NormaliseWide_Normalise = 40407;

}  // namespace qve::status
