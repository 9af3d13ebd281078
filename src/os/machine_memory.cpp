// How much memory the machine has, and how much of it is to be had.

#include <sys/sysinfo.h>

#include <algorithm>
#include <charconv>
#include <fstream>
#include <string>

#include "os/MappedFile.h"

namespace qve {

namespace {

constexpr uint64_t unlimited = ~uint64_t{0};

// The number in a text, after what stands before its first digit.
uint64_t number_in(std::string_view text, uint64_t otherwise) {
    const size_t begin = text.find_first_of("0123456789");
    uint64_t number = otherwise;
    if (begin != text.npos) std::from_chars(text.data() + begin, text.data() + text.size(), number);
    return number;
}

// The number on the line of a file that begins with `name`.
uint64_t read_number(const std::string& path, std::string_view name, uint64_t otherwise) {
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);) {
        if (std::string_view(line).starts_with(name)) return number_in(line, otherwise);
    }
    return otherwise;
}

// The control group of the process, under its usual mount point.
std::string control_group() {
    std::ifstream file("/proc/self/cgroup");
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with("0::")) return "/sys/fs/cgroup" + line.substr(3);
    }
    return "/sys/fs/cgroup";
}

const std::string& group() {
    static const std::string path = control_group();
    return path;
}

uint64_t group_limit() {
    return read_number(group() + "/memory.max", "", unlimited);
}

}  // namespace

uint64_t MappedFile::Physical() {
    static const uint64_t physical = [] {
        struct sysinfo machine = {};
        if (::sysinfo(&machine) != 0) return group_limit();
        return std::min(uint64_t{machine.totalram} * machine.mem_unit, group_limit());
    }();
    return physical;
}

uint64_t MappedFile::Available() {
    uint64_t available = read_number("/proc/meminfo", "MemAvailable:", Physical() / 1024) * 1024;
    const uint64_t limit = group_limit();
    if (limit != unlimited) {
        // Cached pages of files count as used there, but are given back under pressure.
        const uint64_t used = read_number(group() + "/memory.current", "", 0);
        const uint64_t cached = read_number(group() + "/memory.stat", "file ", 0);
        const uint64_t held = used > cached ? used - cached : 0;
        available = std::min(available, limit > held ? limit - held : 0);
    }
    return available;
}

}  // namespace qve
