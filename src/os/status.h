#pragma once

/// Numbers of failures of the system that have none of their own: 100 to 103 take precedence, see PosixApi.
namespace qve::status {

inline constexpr int DataFile_Open = 40089;
inline constexpr int DataFile_Read = 40091;
inline constexpr int DataFile_Resize = 40092;
inline constexpr int DataFile_Write = 40093;
inline constexpr int DataFile_Size = 40094;
inline constexpr int BudgetedMemory_Allocate = 40443;
inline constexpr int SpillFile_Write = 40476;
inline constexpr int SpillFile_Read = 40477;
inline constexpr int MappedFile_Cut = 40095;
inline constexpr int MappedFile_Map = 40241;
inline constexpr int MappedFile_Size = 40242;
inline constexpr int OS_copy = 40285;
inline constexpr int OS_getcwd = 40286;
inline constexpr int OS_listdir = 40287;
inline constexpr int OS_mkdir = 40288;
inline constexpr int OS_mkdtemp = 40289;
inline constexpr int OS_mkstemp = 40290;
inline constexpr int OS_rename = 40291;
inline constexpr int OS_rmdir = 40292;
inline constexpr int OS_touch = 40294;
inline constexpr int OS_unlink = 40295;
inline constexpr int OS_Limits = 40299;
inline constexpr int OS_sync = 40297;
inline constexpr int OS_stat = 40298;
inline constexpr int Semaphore_Construct = 40441;
inline constexpr int FileLock_Lock = 40442;

}  // namespace qve::status
