#pragma once

#include <chrono>
#include <string>
#include <thread>

namespace qve {

/// The head of a line of the log: "2024-05-31 08:15:00.0421 (139862): ", in UTC or in local time.
std::string FormatHeader(std::chrono::system_clock::time_point time, std::thread::id thread, bool utc);
/// The same in wide characters.
std::wstring FormatHeaderW(std::chrono::system_clock::time_point time, std::thread::id thread, bool utc);
/// What rotation puts between stem and extension of a file name: "_2024_5_31_8_15_0".
std::wstring FormatRotationTime(std::chrono::system_clock::time_point time, bool utc);

}  // namespace qve
