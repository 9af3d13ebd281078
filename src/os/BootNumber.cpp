#include "os/BootNumber.h"

#include <fstream>
#include <functional>
#include <string>

namespace qve {

uint64_t BootNumber() {
    static const uint64_t number = [] {
        std::string id;
        std::ifstream("/proc/sys/kernel/random/boot_id") >> id;
        return id.empty() ? uint64_t{0} : uint64_t{std::hash<std::string>()(id)};
    }();
    return number;
}

}  // namespace qve
