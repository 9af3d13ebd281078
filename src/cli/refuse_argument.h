#pragma once

#include <tclap/CmdLine.h>

#include <string>

namespace qve::cli {

/// Ends the process as TCLAP does for a word that is no option: with what is wrong, and a short help.
[[noreturn]] void RefuseArgument(TCLAP::CmdLine& line, const std::string& why, const std::string& argument);

}  // namespace qve::cli
