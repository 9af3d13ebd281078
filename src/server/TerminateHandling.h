#pragma once

#include <string>

namespace qve {

/// What happens when the process cannot go on. On this platform the system's own crash handling is all there is.
class TerminateHandling {
public:
    struct Options {
        std::wstring dumpDirectory;
        std::wstring reportName = L"qveserver64-error";
        bool reserved1 = false;
        bool reserved2 = false;
        bool noDumpFile = false;
        bool suspendOnCrash = false;
    };

    /// Options for dumps beside the log at `logPath`: its directory with the separator, ".\" when it has none.
    static Options BesideLog(const std::wstring& logPath);
    /// Installs nothing: core files are the system's affair.
    static void SetupFaultReporting(const Options& options);
    /// Ends the process as `quillon_terminate` does; `dump` asks for what this platform leaves to the system.
    [[noreturn]] static void TerminateWithDump(bool dump);
};

/// Ends the process by abort.
[[noreturn]] void quillon_terminate();

}  // namespace qve
