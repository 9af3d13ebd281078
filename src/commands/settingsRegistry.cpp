#include "commands/settingsRegistry.h"

#include <algorithm>
#include <limits>
#include <vector>

#include "algebra/Append.h"
#include "algebra/ForcedGrouping.h"
#include "commands/status.h"
#include "metrics/MetricsManager.h"
#include "os/BudgetedMemory.h"
#include "os/MappedFile.h"
#include "storage/stream/DataStream.h"
#include "system/QuillonException.h"
#include "system/unicode.h"
#include "vql/syntax/VQLEvaluatorSettings.h"

namespace qve {
namespace {

using Evaluator = VQLEvaluatorSettings;
using Metrics::ControlCode;
using Metrics::MetricsBitsUtils;
using Metrics::MetricsManager;

[[noreturn]] void Refuse(const std::string& reason) {
    throw QVE_RuntimeError(status::Setting_value, reason);
}

Setting Flag(std::wstring_view name, void (*set)(bool), bool (*get)()) {
    return {.name = name, .setBoolean = set, .getBoolean = get};
}
Setting Number(std::wstring_view name, void (*set)(unsigned), unsigned (*get)()) {
    return {.name = name, .setUnsigned = set, .getUnsigned = get};
}

std::uint64_t ReadBits(const std::wstring& mnemonics) {
    const std::string list = narrow(mnemonics);
    const std::string unknown = MetricsBitsUtils::ValidateMnemonicList(list);
    if (!unknown.empty()) Refuse("Invalid metrics Mnemonic's: " + unknown);
    return MetricsBitsUtils::ToBits(list);
}

std::wstring GetMetricsBits() {
    return widen(MetricsBitsUtils::ToMnemonics(MetricsManager::GetInstance().GetBits()));
}

void BitsChanged() {
    MetricsManager& manager = MetricsManager::GetInstance();
    manager.Control(ControlCode::BitsChanged, "bits", manager.GetBits());
}

void SetMetricsSet(const std::wstring& mnemonics) {
    MetricsManager::GetInstance().SetBits(ReadBits(mnemonics));
    BitsChanged();
}
void SetMetricsClear(const std::wstring& mnemonics) {
    MetricsManager::GetInstance().ClearBits(ReadBits(mnemonics));
    BitsChanged();
}
void SetMetricsReconfigure(const std::wstring& parameters) {
    MetricsManager::GetInstance().Control(ControlCode::Reconfigure, "parameters", std::wstring_view(parameters));
}
void MetricsTraceSessionOn(unsigned session) {
    MetricsManager::GetInstance().Control(ControlCode::TraceSession, "on", std::uint64_t{session});
}
void MetricsTraceSessionOff(unsigned session) {
    MetricsManager::GetInstance().Control(ControlCode::TraceSession, "off", std::uint64_t{session});
}

std::vector<Setting> MakeRegistry() {
    return {
        Number(L"DefaultDegreeOfParallelism", Evaluator::SetDefaultDegreeOfParallelism,
               Evaluator::GetDefaultDegreeOfParallelism),
        Flag(L"DefaultDescribeExecution", Evaluator::SetDefaultDescribeExecution,
             Evaluator::GetDefaultDescribeExecution),
        Flag(L"DefaultDetailedLogging", Evaluator::SetDefaultDetailedLogging, Evaluator::GetDefaultDetailedLogging),
        Flag(L"DefaultEncodings", Evaluator::SetDefaultEncodings, Evaluator::GetDefaultEncodings),
        Flag(L"DefaultOrderPreservingExchange", Evaluator::SetDefaultOrderPreservingExchange,
             Evaluator::GetDefaultOrderPreservingExchange),
        Flag(L"DefaultOrderedAggregates", Evaluator::SetDefaultOrderedAggregates,
             Evaluator::GetDefaultOrderedAggregates),
        {.name = L"ForcedGrouping", .setString = ForcedGrouping::Set, .getString = ForcedGrouping::GetName},
        Number(L"MaxConcurrency", Evaluator::SetMaxConcurrency, Evaluator::GetMaxConcurrency),
        Number(L"MaxQueryTokenCount", Evaluator::SetMaxQueryTokenCount, Evaluator::GetMaxQueryTokenCount),
        Flag(
            L"MemoryMapEntireFile", [](bool on) { MappedFile::s_MemoryMapEntireFile = on; },
            [] { return static_cast<bool>(MappedFile::s_MemoryMapEntireFile); }),
        Number(
            L"MemoryBudget", [](unsigned mebibytes) { BudgetedMemory::SetBudget(uint64_t{mebibytes} << 20); },
            [] { return static_cast<unsigned>(BudgetedMemory::GetBudget() >> 20); }),
        Number(L"MinimumDegreeOfParallelism", Evaluator::SetMinimumDegreeOfParallelism,
               Evaluator::GetMinimumDegreeOfParallelism),
        {.name = L"OptimizationLogPath",
         .setString = [](const std::wstring& path) { Evaluator::SetOptimizationLogPath(narrow(path)); },
         .getString = [] { return widen(Evaluator::GetOptimizationLogPath()); }},
        Flag(L"OptimizationLogging", Evaluator::SetOptimizationLogging, Evaluator::GetOptimizationLogging),
        Flag(L"OptimizationPropertiesLogging", Evaluator::SetOptimizationPropertiesLogging,
             Evaluator::GetOptimizationPropertiesLogging),
        Flag(L"TruncateOptimizationLog", Evaluator::SetTruncateOptimizationLog, Evaluator::GetTruncateOptimizationLog),
        Flag(L"UseFullParallelism", Evaluator::SetUseFullParallelism, Evaluator::GetUseFullParallelism),
        Flag(L"UseLogicalParallelizer", Evaluator::SetUseLogicalParallelizer, Evaluator::GetUseLogicalParallelizer),
        Flag(L"UseMemoryBudgeting", Evaluator::SetUseMemoryBudgeting, Evaluator::GetUseMemoryBudgeting),
        Flag(L"UseMergeGrouping", Evaluator::SetUseMergeGrouping, Evaluator::GetUseMergeGrouping),
        Flag(L"UseParallelHashing", Evaluator::SetUseParallelHashing, Evaluator::GetUseParallelHashing),
        Flag(L"UseSharedHashing", Evaluator::SetUseSharedHashing, Evaluator::GetUseSharedHashing),
        Flag(L"UseHeapMerger", Append::SetUseHeapMerger, Append::GetUseHeapMerger),
        Number(
            L"WorkBufferSize", [](unsigned mebibytes) { DataStream::SetWorkBufferSize(std::max(1U, mebibytes)); },
            [] { return static_cast<unsigned>(DataStream::GetWorkBufferSize()); }),
        {.name = L"metrics.set", .setString = SetMetricsSet, .getString = GetMetricsBits},
        {.name = L"metrics.clear", .setString = SetMetricsClear, .getString = GetMetricsBits},
        {.name = L"metrics.reconfigure", .setString = SetMetricsReconfigure},
        {.name = L"metrics.tracesession.on", .setUnsigned = MetricsTraceSessionOn},
        {.name = L"metrics.tracesession.off", .setUnsigned = MetricsTraceSessionOff},
    };
}

}  // namespace

std::wstring Setting::GetText() const {
    if (getString) return getString();
    if (getBoolean) return getBoolean() ? L"true" : L"false";
    if (getUnsigned) return std::to_wstring(getUnsigned());
    return L"<no getter defined>";
}

void Setting::Set(const VQLDataValue& value) const {
    if (setBoolean) {
        if (value.GetType() != VQLDataType::boolean) Refuse("Expected boolean value");
        setBoolean(value.GetBoolean());
    } else if (setUnsigned) {
        const bool fits = value.GetType() == VQLDataType::integer && value.GetInteger() >= 0 &&
                          value.GetInteger() <= std::numeric_limits<unsigned>::max();
        if (!fits) Refuse("Expected unsigned integer value");
        setUnsigned(static_cast<unsigned>(value.GetInteger()));
    } else if (setString) {
        if (value.GetType() != VQLDataType::string) Refuse("Expected string value");
        setString(value.GetString());
    } else {
        Refuse("Setting is read-only");
    }
}

std::span<const Setting> settingsRegistry() {
    static const std::vector<Setting> registry = MakeRegistry();
    return registry;
}

const Setting& FindSetting(std::wstring_view name) {
    const std::span<const Setting> settings = settingsRegistry();
    const auto found =
        std::find_if(settings.begin(), settings.end(), [name](const Setting& setting) { return setting.name == name; });
    if (found == settings.end()) throw QVE_RuntimeError(status::Setting_unknown, "Setting not found");
    return *found;
}

}  // namespace qve
