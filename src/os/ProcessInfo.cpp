#include "os/ProcessInfo.h"

#include <sys/resource.h>

#include <charconv>

namespace qve {

namespace {

std::string seconds(const timeval& time) {
    char digits[64];
    const double value = static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
    return std::string(digits, std::to_chars(digits, digits + sizeof(digits), value, std::chars_format::fixed, 3).ptr);
}

}  // namespace

std::vector<std::pair<std::string, std::string>> ProcessInfo::ProcessSummary() {
    rusage usage = {};
    ::getrusage(RUSAGE_SELF, &usage);
    const auto number = [](long value) { return std::to_string(value); };
    return {
        {"cpu.user", seconds(usage.ru_utime)},        {"cpu.system", seconds(usage.ru_stime)},
        {"mem.resident", number(usage.ru_maxrss)},    {"mem.shared", number(usage.ru_ixrss)},
        {"mem.unshareddata", number(usage.ru_idrss)}, {"mem.unsharedstack", number(usage.ru_isrss)},
        {"page.softfaults", number(usage.ru_minflt)}, {"page.hardfaults", number(usage.ru_majflt)},
        {"page.swaps", number(usage.ru_nswap)},       {"io.input", number(usage.ru_inblock)},
        {"io.output", number(usage.ru_oublock)},      {"msg.send", number(usage.ru_msgsnd)},
        {"msg.recv", number(usage.ru_msgrcv)},        {"signals", number(usage.ru_nsignals)},
        {"sched.voluntary", number(usage.ru_nvcsw)},  {"sched.involuntary", number(usage.ru_nivcsw)},
    };
}

}  // namespace qve
