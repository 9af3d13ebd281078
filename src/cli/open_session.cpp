#include "cli/open_session.h"

#include "cli/ServerArguments.h"
#include "cli/Session.h"
#include "cli/report_failure.h"

namespace qve::cli {

std::unique_ptr<Session> OpenSession(const ServerChoice& choice, Interrupt& interrupt) {
    try {
        return std::make_unique<Session>(choice, interrupt);
    } catch (const Failure& failure) {
        ReportFailure(failure, {});
        return nullptr;
    }
}

}  // namespace qve::cli
