#pragma once

#include <string>

namespace qve::cli {

class Failure;

/// Exit statuses of the program.
constexpr int s_statementFailed = 1;
constexpr int s_noServer = 2;
constexpr int s_interrupted = 130;

/// Prints a failure to standard error, and for a mistake in the statement the place of it. The statement begins at a
/// line and column of some text, counted from 0.
void ReportFailure(const Failure& failure, const std::string& statement, int line = 0, int column = 0);

}  // namespace qve::cli
