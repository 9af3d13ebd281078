#include "system/CPU.h"

#include <cpuid.h>

#include <cstdlib>
#include <string_view>

namespace qve {
namespace {

bool has_bits(unsigned leaf, unsigned reg, unsigned mask) {
    unsigned registers[4] = {};
    if (!CPU::IsVectFeatureEnabled() || reg > 3) return false;
    if (!__get_cpuid_count(leaf, 0, &registers[0], &registers[1], &registers[2], &registers[3])) return false;
    return (registers[reg] & mask) == mask;
}

}  // namespace

bool CPU::CheckInfo(unsigned reg, unsigned mask) {
    return has_bits(1, reg, mask);
}

bool CPU::CheckExtended(unsigned reg, unsigned mask) {
    return has_bits(7, reg, mask);
}

bool CPU::IsVectFeatureEnabled() {
    static const bool enabled = [] {
        const char* value = std::getenv("QUILLON_VECTORIZATION");
        return value == nullptr || std::string_view(value) != "0";
    }();
    return enabled;
}

}  // namespace qve
