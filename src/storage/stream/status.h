#pragma once

/// Numbers of the faults that data streams raise.
namespace qve::status {

inline constexpr int ConstantDataStream_AppendStream = 40081;
inline constexpr int ConstantDataStream_AppendBuffer = 40082;
inline constexpr int ConstantDataStream_Extend = 40083;
inline constexpr int ConstantDataStream_Resize = 40084;
inline constexpr int FileDataStream_GetInput = 40175;
inline constexpr int FileDataStream_GetOutputReadOnly = 40176;
inline constexpr int FileDataStream_GetOutput = 40177;
inline constexpr int FileDataStream_Seek = 40178;
inline constexpr int FileDataStream_Map = 40179;
inline constexpr int FileDataStream_Size = 40173;
inline constexpr int MemoryDataStream_AppendStream = 40256;
inline constexpr int MemoryDataStream_AppendBuffer = 40257;
inline constexpr int MemoryDataStream_Extend = 40258;
inline constexpr int MemoryDataStream_Fork = 40259;
inline constexpr int MemoryDataStream_GetInput = 40260;
inline constexpr int MemoryDataStream_GetOutput = 40261;
inline constexpr int MemoryDataStream_GetOutputForked = 40262;
inline constexpr int MemoryDataStream_Resize = 40263;
inline constexpr int MemoryDataStream_Seek = 40264;
inline constexpr int ReadOnlyDataStream_Extend = 40362;
inline constexpr int ReadOnlyDataStream_GetOutput = 40363;
inline constexpr int ReadOnlyDataStream_Resize = 40364;
inline constexpr int ResidentDataStream_GetInput = 40389;

}  // namespace qve::status
