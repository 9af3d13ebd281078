#pragma once

/// Status numbers of the client library. Programs match on them: never reuse, never renumber.
namespace qve::status {

inline constexpr int Client_Argument = 40506;
inline constexpr int Client_Unexpected = 40507;
inline constexpr int Client_NotConnected = 40508;
inline constexpr int Client_Network = 40509;
inline constexpr int ClientConnection_SessionOpen = 40510;
inline constexpr int ClientConnection_Send = 40511;
inline constexpr int QVE_ServerProcess_NotStarted = 40512;
inline constexpr int QVE_ServerProcess_Launch = 40513;
inline constexpr int QVE_ServerProcess_CallBack = 40514;
inline constexpr int QVE_ServerProcess_AlreadyStarted = 40515;
inline constexpr int Client_Index = 40516;
inline constexpr int Client_InsertArray = 40517;

}  // namespace qve::status
