#include "algebra/Aggr.h"

#include <algorithm>

#include "algebra/ColumnExp.h"
#include "algebra/ExpVisitorImpl.h"
#include "algebra/GroupPartition.h"
#include "algebra/GroupParts.h"
#include "algebra/HashGrouping.h"
#include "algebra/OperatorProgressCallback.h"
#include "algebra/OperatorVisitor.h"
#include "algebra/PartitionSplit.h"
#include "algebra/ProgressCallbackImpl.h"
#include "algebra/SpilledRows.h"
#include "algebra/group_key_properties.h"
#include "algebra/status.h"
#include "storage/Column.h"
#include "system/CancelScope.h"
#include "system/QuillonException.h"
#include "system/unicode.h"
#include "telemetry/LogEntry.h"
#include "telemetry/LogScopeTime.h"
#include "vql/syntax/VQLEvaluatorSettings.h"

namespace qve {

namespace {

// So many groups, with their keys and accumulators, stay in the caches of a processor. A budget that is small for the
// data says the same of memory, in bytes for a group.
constexpr uint64_t cachedGroups = 1u << 15;
constexpr uint64_t bytesForCachedGroup = 1u << 14;
// A group takes less, in the table of hashes and in the columns, but not much less while a table grows, and there are
// other operators.
constexpr uint64_t bytesForGroup = 1u << 10;

}  // namespace

Aggr::Aggr(RefCntPtr<DataFlow> source, ColumnNames keyNames, std::vector<RefCntPtr<Exp>> aggregates,
           unsigned groupLimit, unsigned estimate)
    : m_source(std::move(source)),
      m_keyNames(std::move(keyNames)),
      m_aggregates(std::move(aggregates)),
      m_groupLimit(groupLimit),
      m_estimate(estimate),
      m_partition(std::make_unique<GroupPartition>()),
      m_progress(MakeRef<ProgressCallbackImpl>()) {
    if (!m_source) throw QVE_InvalidArgument(status::Aggr_source, "Aggr::Aggr missing m_source");
    for (const std::wstring& key : m_keyNames) m_columns.emplace(key, nullptr);
    for (const RefCntPtr<Exp>& aggregate : m_aggregates) m_columns.emplace(aggregate->GetName(), nullptr);
}
Aggr::~Aggr() = default;

void Aggr::Accept(OperatorVisitor& visitor) {
    visitor.VisitAggr(*this);
}

ColumnNames Aggr::GetColumnNames() const {
    ColumnNames names;
    for (const auto& [name, column] : m_columns) names.insert(names.end(), name);
    return names;
}

bool Aggr::HasColumn(const std::wstring& name) const {
    return m_columns.contains(name);
}

RefCntPtr<Column> Aggr::GetColumn(const std::wstring& name) const {
    const auto found = m_columns.find(name);
    if (found == m_columns.end()) throw QVE_OutOfRange(status::Aggr_GetColumn, "Aggr::GetColumn: " + narrow(name));
    if (!found->second) found->second = LoadColumn(name);
    return found->second;
}

unsigned Aggr::GetColumnCount() const {
    return static_cast<unsigned>(m_columns.size());
}

RefCntPtr<Column> Aggr::DescribeColumn(const std::wstring& name) const {
    const auto found = m_columns.find(name);
    if (found == m_columns.end()) {
        throw QVE_OutOfRange(status::Aggr_DescribeColumn, "Aggr::DescribeColumn: " + narrow(name));
    }
    if (found->second) return found->second;
    RefCntPtr<Column>& description = m_descriptions[name];
    if (!description) description = LookupColumn(name);
    return description;
}

uint64_t Aggr::GetStart() const {
    return 0;
}
uint64_t Aggr::GetCount() const {
    return m_groupCount;
}

Exp* Aggr::FindAggregate(const std::wstring& name) const {
    for (const RefCntPtr<Exp>& aggregate : m_aggregates) {
        if (aggregate->GetName() == name) return aggregate.get();
    }
    return nullptr;
}

RefCntPtr<Column> Aggr::LoadColumn(const std::wstring& name) const {
    if (Exp* aggregate = FindAggregate(name)) return aggregate->AllocateColumn(m_source.get());
    return MakeRef<Column>(LookupColumn(name)->GetProperties());
}

RefCntPtr<Column> Aggr::LookupColumn(const std::wstring& name) const {
    if (Exp* aggregate = FindAggregate(name)) return aggregate->AllocateColumn(m_source.get());
    return MakeRef<Column>(group_key_properties(*m_source, m_keyNames, name, false));
}

uint64_t Aggr::Build(unsigned pageSize) {
    if (m_built) return GetCount();
    const CancelScope cancel(m_progress.get());
    const LogScopeTime time("Aggr::Build", 1.0);
    for (auto& [name, column] : m_columns) {
        if (!column) column = LoadColumn(name);
    }
    // A limit ends the reading at the page that passes it.
    BuildPartitioned(m_groupLimit == noLimit ? SourcePageSize(pageSize) : pageSize);
    SetGrouping(nullptr);
    for (const RefCntPtr<Exp>& aggregate : m_aggregates) aggregate->FinishAggregate(m_groupCount, m_progress.get());
    m_built = true;
    if (m_keys.empty()) BindKeys();
    for (const auto& [name, column] : m_columns) {
        column->UpdateAcceleratorProperties();
        column->Seek(0, 0);
    }
    return GetCount();
}

// Groups of different partitions are different where a key is the column that makes the partitions: what finds them
// need know only those of one. Otherwise the partitions are read as one flow.
void Aggr::BuildPartitioned(unsigned pageSize) {
    const auto split = DynamicPtrCast<PartitionSplit>(m_source);
    const bool separate = split && m_keyNames.contains(split->GetColumnName());
    if (split && !separate) m_restarted = split;
    ProcessData(pageSize);
    if (!separate) return;
    while (m_groupCount <= m_groupLimit && split->Restart(pageSize)) {
        if (m_grouping && m_grouping->NameId() == GroupingIdType::hash) m_grouping->Reset(0);
        ProcessData(pageSize);
    }
}

unsigned Aggr::NextPage(unsigned pageSize) {
    unsigned extent = m_source->Next(pageSize);
    while (extent == 0 && m_restarted && m_restarted->Restart(pageSize)) extent = m_source->Next(pageSize);
    return extent;
}

void Aggr::BindKeys() {
    for (const std::wstring& name : m_keyNames) {
        m_keys.emplace_back(m_source->GetColumn(name), m_columns[name]).Bind();
    }
}

void Aggr::SetGrouping(RefCntPtr<Grouping> grouping) {
    m_context.reset();
    m_groupIds.reset();
    m_grouping = std::move(grouping);
    if (!m_grouping) return;
    m_groupingName = m_grouping->GetName();
    m_grouping->SetPoll([progress = m_progress] { OperatorProgressCallback::Check(progress.get()); });
    m_groupIds = m_grouping->AllocateGroupIDs();
    m_context = m_grouping->MakeContext(m_source.get(), this);
    if (VQLEvaluatorSettings::GetDefaultDescribeExecution()) LogEntry() << "AGGR " << m_grouping->GetName();
}

std::wstring Aggr::GetGroupingName() const {
    return m_groupingName.empty() ? ChooseGrouping()->GetName() : m_groupingName;
}

void Aggr::ProcessData(unsigned pageSize) {
    if (!m_source) throw QVE_InvalidArgument(status::Aggr_ProcessData, "Aggr::ProcessData");
    m_missList.resize(std::max<size_t>(m_missList.size(), size_t{pageSize} + 1));
    m_insertList.resize(m_missList.size());
    while (const unsigned extent = NextPage(pageSize)) {
        OperatorProgressCallback::Check(m_progress.get());
        const unsigned count = m_source->GetSelectionCount();
        if (count == 0) continue;
        if (m_keys.empty()) BindKeys();
        if (!m_grouping) SetGrouping(ChooseGrouping());
        ProcessPage(count, extent, m_source->GetSelection());
        if (m_groupCount > m_groupLimit) break;
    }
    if (const auto hash = DynamicPtrCast<HashGrouping>(m_grouping)) {
        hash->LogHashtableStatistics("Aggr::ProcessData : HashGrouping::InsertHash");
    }
    if (m_spilled) {
        const std::unique_ptr<SpilledRows> rows = std::move(m_spilled);
        ProcessSpilled(*rows, 1, pageSize);
        MergeParts();
        m_spillLevel = 0;
    }
}

void Aggr::ProcessPage(unsigned count, unsigned extent, const unsigned* sel) {
    m_pageSpilled = false;
    const input_column groups = AssignGroups(count, extent, sel);
    if (m_pageSpilled) {
        count = static_cast<unsigned>(m_hits.size());
        sel = m_hits.data();
        if (count == 0) return;
    }
    for (const RefCntPtr<Exp>& aggregate : m_aggregates) aggregate->Evaluate(count, extent, sel, m_source.get());
    Accumulate(count, groups, sel);
}

// What is gathered for all rows cannot be finished in parts, and a limit counts the groups of all rows.
bool Aggr::HasPartialMeasures() const {
    return m_groupLimit == noLimit &&
           std::none_of(m_aggregates.begin(), m_aggregates.end(), [](const auto& exp) { return exp->NeedsFinish(); });
}

// Beyond this number of groups rows are set aside, and a table for more would be all misses of the cache.
unsigned Aggr::FirstTableSize() const {
    return HasPartialMeasures() ? std::min<unsigned>(m_estimate, 2 * cachedGroups) : m_estimate;
}

bool Aggr::CanSpill() const {
    if (!HasPartialMeasures() || m_spillLevel >= SpilledRows::levels) return false;
    if (m_grouping->NameId() != GroupingIdType::hash) return false;
    const ColumnNames inputs = GetInputNames();
    return std::all_of(inputs.begin(), inputs.end(), [this](const std::wstring& name) {
        return m_source->GetColumn(name)->GetStorageName() == Column::storageCol;
    });
}

// While half of the rows make new groups, there will be several times as many as there are.
bool Aggr::WantsToSpill(unsigned misses, unsigned count) {
    const uint64_t budget = BudgetedMemory::GetBudget();
    const uint64_t cached = std::min(cachedGroups, budget / bytesForCachedGroup);
    if (m_spillLevel == 0 && m_groupCount >= std::max<uint64_t>(m_nextSpillCheck, cached)) {
        m_nextSpillCheck = 2 * m_groupCount;
        if (misses >= count / 2) return CanSpill();
    }
    if (m_groupCount < budget / bytesForGroup) return false;
    return CanSpill();
}

void Aggr::Spill(unsigned misses, unsigned count, const unsigned* sel, input_column hashes) {
    if (!m_spilled) {
        std::vector<RefCntPtr<Column>> columns;
        for (const std::wstring& name : GetInputNames()) columns.push_back(m_source->GetColumn(name));
        m_spilled = std::make_unique<SpilledRows>(std::move(columns), m_spillLevel);
        if (!m_parts) m_nextSequence = m_groupCount;
    }
    // Rows that only share their hash with a group come last.
    const auto end = m_missList.begin() + misses;
    const auto shared = std::is_sorted_until(m_missList.begin(), end);
    std::sort(shared, end);
    std::inplace_merge(m_missList.begin(), shared, end);
    m_spilled->Add(misses, m_missList.data(), hashes, m_sequence, m_nextSequence);
    if (!m_sequence) m_nextSequence += misses;
    m_hits.clear();
    for (unsigned i = 0, miss = 0; i < count; ++i) {
        const unsigned row = sel ? sel[i] : i;
        if (miss < misses && m_missList[miss] == row) {
            ++miss;
        } else {
            m_hits.push_back(row);
        }
    }
    m_pageSpilled = true;
}

// The columns of the source that keys and aggregates read, but for those with one value for all rows.
ColumnNames Aggr::GetInputNames() const {
    class Collector : public ExpVisitorImpl {
    public:
        void VisitColumnExp(ColumnExp& exp) override { names.insert(exp.GetColumnName()); }
        ColumnNames names;
    } collector;
    for (const RefCntPtr<Exp>& aggregate : m_aggregates) aggregate->Accept(collector);
    collector.names.insert(m_keyNames.begin(), m_keyNames.end());
    ColumnNames names;
    for (const std::wstring& name : collector.names) {
        if (m_source->GetColumn(name)->GetStorageName() != Column::storageVal) names.insert(name);
    }
    return names;
}

void Aggr::ProcessSpilled(SpilledRows& rows, unsigned level, unsigned pageSize) {
    if (VQLEvaluatorSettings::GetDefaultDescribeExecution()) {
        LogEntry() << "AGGR partitions: " << rows.GetCount() << " rows set aside, " << rows.GetBytesInFile()
                   << " bytes in a file, level " << level;
    }
    if (!m_parts) {
        std::vector<RefCntPtr<Column>> columns;
        for (const auto& [name, column] : m_columns) columns.push_back(column);
        m_parts = std::make_unique<GroupParts>(std::move(columns));
        m_parts->Add(m_groupCount, nullptr, m_progress.get());
    }
    for (unsigned partition = 0; partition < SpilledRows::partitions; ++partition) {
        const unsigned expected = m_parts->GetPartCount() > 1 ? m_groupCount + m_groupCount / 8 : 0;
        m_groupCount = 0;
        m_firstSeen.clear();
        m_grouping->Reset(expected);
        m_spillLevel = level;
        rows.StartPartition(partition);
        while (const unsigned count = rows.Next(pageSize)) {
            OperatorProgressCallback::Check(m_progress.get());
            m_sequence = rows.GetSequence();
            ProcessPage(count, count, nullptr);
        }
        if (m_parts->GetCount() + m_groupCount > mostGroups) {
            throw QVE_OverflowError(status::Aggr_InsertRows, "Aggr::InsertRows");
        }
        m_parts->Add(m_groupCount, m_firstSeen.data(), m_progress.get());
        if (m_spilled) {
            const std::unique_ptr<SpilledRows> further = std::move(m_spilled);
            ProcessSpilled(*further, level + 1, pageSize);
        }
    }
    rows.Finish();
    m_sequence = nullptr;
}

void Aggr::MergeParts() {
    m_parts->Merge(m_nextSequence, m_progress.get());
    m_groupCount = static_cast<unsigned>(m_parts->GetCount());
    m_parts.reset();
    budgeted_vector<uint64_t>().swap(m_firstSeen);
}

input_column Aggr::AssignGroups(unsigned count, unsigned extent, const unsigned* sel) {
    if (m_groupIds->GetCount() < extent) {
        const bool one = m_groupIds->GetStorageName() == Column::storageVal;
        m_groupIds->Extend((one ? 1 : extent) - std::min<uint64_t>(m_groupIds->GetCount(), one ? 1 : extent));
        m_groupIds->Seek(0, extent);
    }
    const input_column hashes = m_grouping->HashInsert(count, extent, sel, m_context.get());
    m_groupIds->SetFlags(column_flags::not_null);
    const output_column groups = m_groupIds->GetOutput();
    unsigned misses = m_grouping->Probe(count, m_missList.data(), groups, hashes, sel, m_context.get());
    if (misses > 0 && (m_spilled || WantsToSpill(misses, count))) {
        Spill(misses, count, sel, hashes);
        m_groupIds->SetFlags(column_flags::not_null);  // the one group of all rows is not that of the ones left
        return m_groupIds->GetInput();
    }
    while (misses > 0) {
        if (!m_grouping->Accepts(misses, m_missList.data(), hashes)) {
            ReplaceByHash();
            return AssignGroups(count, extent, sel);
        }
        const unsigned found = m_grouping->FindInserts(misses, m_insertList.data(), m_missList.data(), hashes);
        for (unsigned i = 0; i < found; ++i) groups.values<unsigned>()[m_insertList[i]] = m_groupCount + i;
        m_grouping->InsertHashes(found, m_insertList.data(), hashes, m_groupCount);
        InsertRows(found, m_insertList.data());
        misses -= found;
        const unsigned left = misses;
        misses = m_grouping->Probe(left, m_missList.data(), groups, hashes, m_missList.data(), m_context.get());
        // That the rows that were left are of one group says nothing of the page.
        if (left > 0) m_groupIds->SetFlags(column_flags::not_null);
    }
    const input_column result = m_groupIds->GetInput();
    // Kernels read the one group of a page at the first position, whether that row is selected or not.
    if (result.flags & column_flags::constant)
        groups.values<unsigned>()[0] = groups.values<unsigned>()[sel ? sel[0] : 0];
    return result;
}

void Aggr::InsertRows(unsigned count, const unsigned* rows) {
    if (count > mostGroups - m_groupCount) throw QVE_OverflowError(status::Aggr_InsertRows, "Aggr::InsertRows");
    for (CellCopier& key : m_keys) key.Append(count, rows);
    for (const RefCntPtr<Exp>& aggregate : m_aggregates) aggregate->GetColumn()->Append(count, false);
    if (m_sequence) {
        for (unsigned i = 0; i < count; ++i) m_firstSeen.push_back(m_sequence[rows[i]]);
    }
    m_groupCount += count;
    m_grouping->SetSize(m_groupCount);
}

void Aggr::InsertRow(unsigned row) {
    InsertRows(1, &row);
}

void Aggr::Accumulate(unsigned count, input_column groups, const unsigned* sel) {
    const bool split = (groups.flags & column_flags::constant) == 0 && m_groupCount <= GroupPartition::maxGroups &&
                       m_aggregates.size() >= GroupPartition::fewestAggregates;
    if (!split) return FoldPage(count, groups, sel);
    m_partition->Reset(m_groupCount, count, groups, sel);
    for (unsigned group = 0; group < m_groupCount; ++group) {
        if (const unsigned rows = m_partition->GetCount(group)) {
            FoldPage(rows, m_partition->GetNumbers(group), m_partition->GetSelection(group));
        }
    }
}

void Aggr::FoldPage(unsigned count, input_column groups, const unsigned* sel) {
    m_cluster.Reset(m_groupCount, count, groups, sel, 0, 0);
    for (; m_cluster.GetCount() > 0; m_cluster.Next()) {
        const uint64_t first = m_cluster.GetPosition();
        const uint64_t length = std::min(m_cluster.GetLength(), m_groupCount - first);
        for (const RefCntPtr<Exp>& aggregate : m_aggregates) {
            aggregate->GetColumn()->Seek(first, length);
            aggregate->Aggregate(m_cluster.GetCount(), m_cluster.GetNumbers(), m_cluster.GetSelection());
        }
    }
}

}  // namespace qve
