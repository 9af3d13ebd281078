#include "cli/refuse_argument.h"

#include <cstdlib>

namespace qve::cli {

void RefuseArgument(TCLAP::CmdLine& line, const std::string& why, const std::string& argument) {
    TCLAP::ArgException wrong(why, argument);
    try {
        line.getOutput()->failure(line, wrong);
    } catch (const TCLAP::ExitException& end) {
        std::exit(end.getExitStatus());
    }
    std::exit(EXIT_FAILURE);
}

}  // namespace qve::cli
