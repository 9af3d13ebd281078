#include "server/TerminateHandling.h"

#include <cstdlib>

#include "os/Path.h"

namespace qve {

TerminateHandling::Options TerminateHandling::BesideLog(const std::wstring& logPath) {
    Options options;
    const std::size_t separator = logPath.size() < 2 ? logPath.npos : logPath.find_last_of(L"/\\", logPath.size() - 2);
    const std::wstring directory = separator == logPath.npos ? L".\\" : logPath.substr(0, separator + 1);
    options.dumpDirectory = Path::normseparators(directory);
    return options;
}

void TerminateHandling::SetupFaultReporting(const Options&) {}

void TerminateHandling::TerminateWithDump(bool) {
    quillon_terminate();
}

void quillon_terminate() {
    std::abort();
}

}  // namespace qve
