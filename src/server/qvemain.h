#pragma once

#include <string>
#include <vector>

namespace qve {

/// The server: reads the command line and the configuration, starts, serves until its listener closes, and takes
/// everything down in the reverse order. Gives the exit code: 0, or -1 for a failure that is logged. The first argument
/// is the program.
int qvemain(const std::vector<std::wstring>& arguments);

}  // namespace qve
