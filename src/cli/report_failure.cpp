#include "cli/report_failure.h"

#include <iostream>

#include "cli/ErrorLocator.h"
#include "cli/Session.h"

namespace qve::cli {

void ReportFailure(const Failure& failure, const std::string& statement, int line, int column) {
    std::cout.flush();
    std::cerr << "error " << failure.GetStatus() << ": " << failure.what() << "\n";
    if (const auto place = LocateError(statement, failure.GetStatus(), failure.what())) {
        // As the reader of the file or the line counts: from 1, from the start of the text.
        const int start = place->line == 0 ? column : 0;
        std::cerr << "line " << line + place->line + 1 << ", column " << start + place->column + 1 << ":\n"
                  << ShowPlace(statement, *place) << "\n";
    }
    std::cerr.flush();
}

}  // namespace qve::cli
