#pragma once

namespace qve::status {

inline constexpr int NormaliseWide_Check = 40267;
inline constexpr int NormaliseWide_Normalise = 40268;

}  // namespace qve::status
