#include "system/CPU.h"

#include <cpuid.h>

#include <array>
#include <cstdlib>
#include <string_view>

namespace qve {
namespace {

using Registers = std::array<unsigned, 4>;

/// EAX, EBX, ECX and EDX of a leaf; zeros when the processor has none such.
Registers read_leaf(unsigned leaf) {
    Registers registers{};
    if (!__get_cpuid_count(leaf, 0, &registers[0], &registers[1], &registers[2], &registers[3])) return {};
    return registers;
}

bool has_bits(const Registers& registers, unsigned reg, unsigned mask) {
    return CPU::IsVectFeatureEnabled() && reg < registers.size() && (registers[reg] & mask) == mask;
}

}  // namespace

bool CPU::CheckInfo(unsigned reg, unsigned mask) {
    // Asked once: on a virtual machine each question is a trip to the host.
    static const Registers leaf = read_leaf(1);
    return has_bits(leaf, reg, mask);
}

bool CPU::CheckExtended(unsigned reg, unsigned mask) {
    static const Registers leaf = read_leaf(7);
    return has_bits(leaf, reg, mask);
}

bool CPU::IsVectFeatureEnabled() {
    static const bool enabled = [] {
        const char* value = std::getenv("QUILLON_VECTORIZATION");
        return value == nullptr || std::string_view(value) != "0";
    }();
    return enabled;
}

}  // namespace qve
