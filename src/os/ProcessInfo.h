#pragma once

#include <string>
#include <utility>
#include <vector>

namespace qve {

/// What the system counts for this process.
class ProcessInfo {
public:
    /// Names and values in a fixed order, from "cpu.user" to "sched.involuntary". Processor times are in seconds with
    /// three decimals, memory in the units of getrusage (KiB), the rest are counts.
    static std::vector<std::pair<std::string, std::string>> ProcessSummary();
};

}  // namespace qve
