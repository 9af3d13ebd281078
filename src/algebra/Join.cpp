#include "algebra/Join.h"

#include <algorithm>

#include "algebra/OperatorProgressCallback.h"
#include "algebra/OperatorVisitor.h"
#include "algebra/ProgressCallbackImpl.h"
#include "algebra/SharedJoinGrouping.h"
#include "metrics/Scope.h"
#include "storage/Column.h"
#include "system/CancelScope.h"
#include "telemetry/LogScopeTime.h"

namespace qve {

ColumnNames Join::OutputNames(const Namespace& outer, const NamePairs& imports) {
    ColumnNames names = outer.GetColumnNames();
    for (const auto& [inner, name] : imports) names.insert(name);
    return names;
}

const std::wstring* Join::InnerName(const NamePairs& imports, const std::wstring& name) {
    const auto found =
        std::find_if(imports.begin(), imports.end(), [&](const auto& pair) { return pair.second == name; });
    return found == imports.end() ? nullptr : &found->first;
}

std::wstring Join::JoinTypeToStr(JoinType type) {
    switch (type) {
        case InnerJoin:
            return L"InnerJoin";
        case LeftJoin:
            return L"LeftJoin";
        case RightJoin:
            return L"RightJoin";
        case FullJoin:
            return L"FullJoin";
    }
    return L"UnknownJoin";
}

Join::Join(RefCntPtr<DataFlow> outer, RefCntPtr<Table> inner, NamePairs keys, NamePairs imports, JoinType type,
           bool nullsMatch)
    : DataFlow(outer, OutputNames(*outer, imports)),
      m_inner(std::move(inner)),
      m_keys(std::move(keys)),
      m_imports(std::move(imports)),
      m_type(type),
      m_semantics(nullsMatch ? CompareSemantics::nullsMatch : CompareSemantics::nullsDiffer),
      m_progress(MakeRef<ProgressCallbackImpl>()),
      m_shown(type == RightJoin || type == FullJoin, type == LeftJoin || type == FullJoin) {}

Join::~Join() = default;

void Join::Accept(OperatorVisitor& visitor) {
    visitor.VisitJoin(*this);
}

RefCntPtr<Column> Join::LoadColumn(const std::wstring& name) const {
    const std::wstring* inner = InnerName(m_imports, name);
    return inner ? m_shown.AddInner(m_inner->GetColumn(*inner), name) : m_shown.AddOuter(m_source->GetColumn(name));
}

RefCntPtr<Column> Join::LookupColumn(const std::wstring& name) const {
    const std::wstring* inner = InnerName(m_imports, name);
    return MakeRef<Column>(inner ? m_shown.DescribeInner(*m_inner->DescribeColumn(*inner), name)
                                 : m_shown.DescribeOuter(*m_source->DescribeColumn(name)));
}

void Join::CheckCancelled() const {
    OperatorProgressCallback::Check(m_progress.get());
}

uint64_t Join::BuildInner(unsigned pageSize) {
    return m_inner->Build(pageSize);
}

void Join::HashInner(unsigned pageSize) {
    const CancelScope cancel(m_progress.get());
    Metrics::Scope scope("Join::HashInner");
    scope.NameValue("FieldCount", m_keys.size());
    scope.NameValue("type", JoinTypeToStr(m_type));
    LogScopeTime time("Join::HashInner", 1.0);

    const auto lock = m_shared ? m_shared->LockInner() : std::unique_lock<std::mutex>();
    CheckCancelled();
    // The consumers' columns are bound to the dictionaries of the inner table once it is built.
    for (const auto& entry : m_columns) GetColumn(entry.first);
    const unsigned buildSize = std::max(pageSize, buildRows);
    m_innerCount = BuildInner(buildSize);
    time.SetNumber(m_innerCount);
    EnforceCompatibility(buildSize);
    ChooseGrouping(buildSize);
    m_shown.BindInner(m_inner->GetStart(), m_innerCount, m_progress.get(), m_shared && m_shared->IsShared());
    m_linkColumn = FollowsLinks() ? m_grouping->GetLinks() : nullptr;
    if (m_linkColumn) {
        m_linkColumn->Seek(0, m_innerCount);
        m_links = m_linkColumn->GetInput().values<unsigned>();
    }
    if (KeepsInner()) m_grouping->CreateInnerMatched(m_innerCount);
    scope.NameValue("impl", m_grouping->GetName());
    scope.NameValue("InnerCount", m_innerCount);
    m_phase = Phase::outer;
}

void Join::ResetCursor() {
    DataFlow::ResetCursor();
    m_linked.clear();
    m_nextLinked = 0;
    if (m_phase != Phase::unhashed && m_grouping) m_phase = Phase::outer;
}

unsigned Join::Next(unsigned pageSize) {
    if (pageSize == 0) return SetPage(0);
    CheckCancelled();
    if (m_phase == Phase::unhashed) HashInner(pageSize);
    if (m_phase == Phase::outer) {
        if (NextLink(pageSize) || NextOuter(pageSize) > 0) return m_extent;
        if (KeepsInner() && m_grouping->JoinUnmatched()) {
            BuildUnmatched();
            m_phase = Phase::unmatched;
        } else {
            m_phase = Phase::ended;
        }
    }
    if (m_phase == Phase::unmatched) {
        if (NextUnmatched(pageSize) > 0) return m_extent;
        m_phase = Phase::ended;
    }
    return SetPage(0);
}

unsigned Join::NextOuter(unsigned pageSize) {
    unsigned count = 0;
    do {
        m_extent = m_outer->Next(pageSize);
        if (m_extent == 0) return 0;
        count = m_outer->GetSelectionCount();
    } while (count == 0);
    m_selection = m_outer->GetSelection();
    m_selectionCount = count;
    if (m_groups.size() < m_extent) {
        m_groups.resize(m_extent);
        m_hits.resize(m_extent + size_t{1});
    }

    const input_column hashes = m_grouping->HashProbe(count, m_extent, m_selection, m_context.get());
    unsigned char flags = 0;
    const output_column groups{m_groups.data(), nullptr, sizeof(unsigned), m_extent, &flags};
    const unsigned hits = m_grouping->ProbeHits(count, m_hits.data(), groups, hashes, m_selection, m_context.get());
    if (KeepsInner()) {
        const input_column all{m_groups.data(), nullptr, sizeof(unsigned), m_extent, column_flags::not_null};
        const input_column rows{m_hits.data(), nullptr, sizeof(unsigned), hits, column_flags::not_null};
        m_grouping->MarkInnerMatched(0, static_cast<unsigned>(m_innerCount), hits, all, rows);
    }
    m_linked.clear();
    m_nextLinked = 0;
    if (m_links) {
        std::copy_if(m_hits.begin(), m_hits.begin() + hits, std::back_inserter(m_linked),
                     [this](unsigned row) { return m_links[m_groups[row]] != Grouping::noGroup; });
        if (!m_linked.empty()) m_linkRow = m_links[m_groups[m_linked.front()]];
    }
    if (!KeepsOuter() && hits != count) {
        m_selection = m_hits.data();
        m_selectionCount = hits;
    }
    m_shown.PassOuter();
    if (m_selectionCount > 0) ImportInner(m_selectionCount, m_extent, m_groups.data(), m_selection);
    return m_extent;
}

void Join::ImportInner(unsigned count, unsigned extent, const unsigned* rows, const unsigned* sel) {
    m_shown.PickInner(count, extent, rows, sel);
}

bool Join::NextLink(unsigned pageSize) {
    if (m_nextLinked == m_linked.size()) return false;
    m_outerRows.clear();
    m_innerRows.clear();
    while (m_outerRows.size() < pageSize && m_nextLinked < m_linked.size()) {
        m_outerRows.push_back(m_linked[m_nextLinked]);
        m_innerRows.push_back(m_linkRow);
        m_linkRow = m_links[m_linkRow];
        if (m_linkRow != Grouping::noGroup) continue;
        if (++m_nextLinked < m_linked.size()) m_linkRow = m_links[m_groups[m_linked[m_nextLinked]]];
    }
    const auto count = static_cast<unsigned>(m_outerRows.size());
    if (KeepsInner()) {
        const input_column rows{m_innerRows.data(), nullptr, sizeof(unsigned), count, column_flags::not_null};
        m_grouping->MarkInnerMatched(0, static_cast<unsigned>(m_innerCount), count, rows, input_column{});
    }
    SetPage(count);
    m_shown.PickOuter(count, m_outerRows.data());
    ImportInner(count, count, m_innerRows.data(), nullptr);
    return true;
}

void Join::BuildUnmatched() {
    const RefCntPtr<Column> matched = m_grouping->GetInnerMatched();
    matched->Seek(0, m_innerCount);
    m_matched = matched->GetInput().values<unsigned char>();
    m_nextUnmatched = 0;
}

unsigned Join::NextUnmatched(unsigned pageSize) {
    m_innerRows.clear();
    for (; m_nextUnmatched < m_innerCount && m_innerRows.size() < pageSize; ++m_nextUnmatched) {
        if (!m_matched[m_nextUnmatched]) m_innerRows.push_back(static_cast<unsigned>(m_nextUnmatched));
    }
    const auto count = static_cast<unsigned>(m_innerRows.size());
    if (count == 0) return SetPage(0);
    SetPage(count);
    m_shown.ClearOuter(count);
    ImportInner(count, count, m_innerRows.data(), nullptr);
    return count;
}

}  // namespace qve
