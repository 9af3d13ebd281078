#pragma once

/// Status numbers of the wire protocol. Clients match on them: never reuse, never renumber.
namespace qve::status {

inline constexpr int QVE_Message_TooLong = 40431;
inline constexpr int QVE_ValueArray_SetPrefix = 40504;
inline constexpr int QVE_ValueArray_WriteValues = 40505;
inline constexpr int QVE_InputIterator_BadMagic = 70003;
inline constexpr int QVE_InputIterator_Overrun = 70004;
inline constexpr int QVE_InputIterator_StringLength = 70005;
inline constexpr int QVE_InputIterator_StringTermination = 70006;
inline constexpr int QVE_InputIterator_ValueOverrun = 70007;

}  // namespace qve::status
