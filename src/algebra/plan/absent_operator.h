#pragma once

namespace qve {

/// Raises QVE_LogicError 40296: a visitor came to an operator of a class that this program has not.
[[noreturn]] void throw_absent_operator(const char* name);

}  // namespace qve
