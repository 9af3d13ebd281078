#pragma once

#include <string>

namespace qve {

/// What to tell of a failure: its text, or a general one for statuses that come without.
std::string GetErrorMessage(int status, const std::string& text);

/// Whether the user can do something about a status: mend a statement, free space, reach the server.
bool IsActionableError(int status);

}  // namespace qve
