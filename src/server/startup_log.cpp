#include "server/startup_log.h"

#include <thread>

#include "algebra/Namespace.h"
#include "os/OS.h"
#include "system/CPU.h"
#include "telemetry/LogEntry.h"
#include "vql/eval/VQLQueryEvaluator.h"

namespace qve {
namespace {

enum Register : unsigned { EAX = 0, EBX = 1, ECX = 2, EDX = 3 };

const char* YesOrNo(bool supported) {
    return supported ? "Yes\n" : "No\n";
}

#if defined(__x86_64__)
/// Whether the system saves the wide registers of a thread.
bool SavesWideRegisters() {
    constexpr unsigned osxsave = 1U << 27;
    if (!CPU::CheckInfo(ECX, osxsave)) return false;
    unsigned low;
    unsigned high;
    __asm__("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
    constexpr unsigned sseAndAvx = 6;
    return (low & sseAndAvx) == sseAndAvx;
}
#else
bool SavesWideRegisters() {
    return false;
}
#endif

void LogVectorization() {
    const bool wide = SavesWideRegisters();
    LogEntry() << "Vectorization Support\n"
               << "  Supports SSE:    " << YesOrNo(CPU::CheckInfo(EDX, 1U << 25))
               << "  Supports SSE2:   " << YesOrNo(CPU::CheckInfo(EDX, 1U << 26))
               << "  Supports SSE3:   " << YesOrNo(CPU::CheckInfo(ECX, 1U << 0))
               << "  Supports SSE4.1: " << YesOrNo(CPU::CheckInfo(ECX, 1U << 19))
               << "  Supports SSE4.2: " << YesOrNo(CPU::CheckInfo(ECX, 1U << 20))
               << "  Supports AVX:    " << YesOrNo(CPU::CheckInfo(ECX, 1U << 28) && wide)
               << "  Supports AVX2:   " << YesOrNo(CPU::CheckExtended(EBX, 1U << 5) && wide);
}

}  // namespace

void LogMachine() {
    LogEntry() << "Machine Configuration\n"
               << "  Max Descriptors: " << OS::Limits::get_descriptors_soft_limit() << "\n";
    LogVectorization();
    LogEntry() << "Adjusted Parallelism Values\n"
               << "  CPUs available to process: " << std::thread::hardware_concurrency() << "\n"
               << "  max-concurrency:           " << VQLQueryEvaluator::GetMaxConcurrency() << "\n"
               << "  query-parallelism:         " << VQLQueryEvaluator::GetDefaultDegreeOfParallelism() << "\n"
               << "  min-query-parallelism:     " << VQLQueryEvaluator::GetMinimumDegreeOfParallelism() << "\n";
}

}  // namespace qve
