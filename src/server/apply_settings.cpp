#include "server/apply_settings.h"

#include <algorithm>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "algebra/Append.h"
#include "algebra/ForcedGrouping.h"
#include "algebra/TableSorter.h"
#include "ingest/TextScan.h"
#include "ingest/TranscodingDataStream.h"
#include "os/BudgetedMemory.h"
#include "os/MappedFile.h"
#include "primitives/random_numbers.h"
#include "server/configuration.h"
#include "storage/Column.h"
#include "storage/MemoryDirectoryTableSpace.h"
#include "storage/stream/DataStream.h"
#include "types/ICUCollation.h"
#include "vql/eval/VQLExpressionCompiler.h"
#include "vql/eval/VQLQueryEvaluator.h"

namespace qve {
namespace {

class Settings {
public:
    explicit Settings(const usrprops& configuration) : m_configuration(configuration) {}

    template <class Set>
    void Flag(usrpropkey key, Set set) const {
        if (m_configuration.has(key)) set(m_configuration.is_true(key));
    }
    template <class Set>
    void Number(usrpropkey key, Set set) const {
        if (m_configuration.has(key)) set(ReadUnsigned(m_configuration.text(key)));
    }

private:
    const usrprops& m_configuration;
};

unsigned Clamp(std::uint64_t number) {
    return static_cast<unsigned>(std::min<std::uint64_t>(number, std::numeric_limits<unsigned>::max()));
}

std::vector<std::wstring> SplitAtCommas(std::wstring_view text) {
    std::vector<std::wstring> parts;
    while (true) {
        const std::size_t comma = text.find(L',');
        parts.emplace_back(text.substr(0, comma));
        if (comma == std::wstring_view::npos) return parts;
        text.remove_prefix(comma + 1);
    }
}

void ApplyParallelism(const usrprops& configuration) {
    const ParallelismFigures figures = ParallelismFigures::Compute(configuration, DataStream::GetMaxConcurrency(),
                                                                   VQLQueryEvaluator::GetMinimumDegreeOfParallelism());
    VQLQueryEvaluator::SetMaxConcurrency(figures.maxConcurrency);
    VQLQueryEvaluator::SetDefaultDegreeOfParallelism(figures.degree);
    VQLQueryEvaluator::SetMinimumDegreeOfParallelism(figures.minimumDegree);
}

}  // namespace

void ApplySettings(const usrprops& configuration) {
    const Settings settings(configuration);
    settings.Flag(usrpropkey::fullparallelism, VQLQueryEvaluator::SetUseFullParallelism);
    settings.Flag(usrpropkey::LogicalParallelizer, VQLQueryEvaluator::SetUseLogicalParallelizer);
    ApplyParallelism(configuration);
    settings.Flag(usrpropkey::sharedhashing, VQLQueryEvaluator::SetUseSharedHashing);
    settings.Flag(usrpropkey::parallelhashing, VQLQueryEvaluator::SetUseParallelHashing);
    settings.Flag(usrpropkey::memorybudgeting, VQLQueryEvaluator::SetUseMemoryBudgeting);
    settings.Flag(usrpropkey::radixsorting, TableSorter::SetUseRadixSorting);
    const auto setTokenCount = [](std::uint64_t count) { VQLQueryEvaluator::SetMaxQueryTokenCount(Clamp(count)); };
    settings.Number(usrpropkey::maxquerytokencount, setTokenCount);
    settings.Number(usrpropkey::MaxQueryTokenCount, setTokenCount);
    settings.Flag(usrpropkey::parsingconstantfolding, VQLExpressionCompiler::SetUseConstantFolding);
    if (const std::wstring* servers = configuration.get(usrpropkey::remoteservers)) {
        VQLQueryEvaluator::SetRemoteServerDescs(SplitAtCommas(*servers));
    }
    settings.Flag(usrpropkey::MergeGrouping, VQLQueryEvaluator::SetUseMergeGrouping);
    if (const std::wstring* grouping = configuration.get(UsrPropKey_FromString(L"ForcedGrouping"))) {
        ForcedGrouping::Set(*grouping);
    }
    settings.Number(usrpropkey::work_buffer_size,
                    [](std::uint64_t megabytes) { DataStream::SetWorkBufferSize(std::max(1U, Clamp(megabytes))); });
    settings.Number(UsrPropKey_FromString(L"memory-budget"),
                    [](std::uint64_t megabytes) { BudgetedMemory::SetBudget(std::uint64_t{Clamp(megabytes)} << 20); });
    settings.Flag(usrpropkey::MemoryMapEntireFile, [](bool on) { MappedFile::s_MemoryMapEntireFile = on; });
    settings.Number(usrpropkey::charset_sample_size, [](std::uint64_t kibibytes) {
        TranscodingDataStream::s_CharsetSampleSize = std::uint64_t{Clamp(kibibytes)} * 1024;
    });
    settings.Number(usrpropkey::record_separator_textscan_limit,
                    [](std::uint64_t kilobytes) { TextScan::SetRecordSeparatorScanLimitK(Clamp(kilobytes)); });
    settings.Flag(usrpropkey::use_memory_tablespace,
                  [](bool on) { MemoryDirectoryTableSpace::s_useMemoryDirectoryTableSpace = on; });
    settings.Flag(usrpropkey::use_heap_merger, Append::SetUseHeapMerger);
    settings.Flag(usrpropkey::optimize_icu, [](bool on) { ICUCollation::s_OptimizeICU = on; });
    settings.Number(usrpropkey::seed, seed_random_numbers);
    settings.Number(usrpropkey::acceleration, [](std::uint64_t entries) { Column::setAcceleratorThreshold(entries); });
}

}  // namespace qve
