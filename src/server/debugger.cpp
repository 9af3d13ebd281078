#include "server/debugger.h"

#include <chrono>
#include <csignal>
#include <fstream>
#include <string>
#include <thread>

namespace qve {
namespace {

bool IsDebuggerPresent() {
    std::ifstream status("/proc/self/status");
    std::string key;
    int value = 0;
    while (status >> key) {
        if (key == "TracerPid:") return status >> value && value != 0;
    }
    return false;
}

}  // namespace

void WaitForDebugger() {
    for (int i = 0; i < 1000 && !IsDebuggerPresent(); ++i) std::this_thread::sleep_for(std::chrono::milliseconds(100));
    std::raise(SIGTRAP);
}

}  // namespace qve
