#include "algebra/ClusteringFlow.h"

#include <algorithm>

#include "algebra/ConstantExp.h"
#include "algebra/MapExp.h"
#include "algebra/OperatorVisitor.h"
#include "algebra/PageGatherer.h"
#include "algebra/status.h"
#include "storage/Column.h"
#include "system/QuillonException.h"
#include "system/unicode.h"
#include "types/datatraits.h"

namespace qve {

namespace {

RefCntPtr<Exp> Remainder(const RefCntPtr<Exp>& number, unsigned clusters) {
    if (!number || clusters == 0) {
        throw QVE_InvalidArgument(status::ClusteringFlow_number, "ClusteringFlow: no number, or no clusters");
    }
    return MakeRef<MapBinaryExp>(L"", L"mod", MakeRef<MapUnaryExp>(L"", L"bigint", number),
                                 MakeRef<ConstantExp>(usratom(bigint{clusters})));
}

}  // namespace

ClusteringFlow::ClusteringFlow(RefCntPtr<DataFlow> source, RefCntPtr<Exp> number, unsigned clusters,
                               unsigned long long limit)
    : DataFlow(source, source ? source->GetColumnNames() : ColumnNames()),
      m_number(std::move(number)),
      m_remainder(Remainder(m_number, clusters)),
      m_limit(limit),
      m_queues(clusters) {
    if (!m_source) throw QVE_InvalidArgument(status::ClusteringFlow_source, "ClusteringFlow::m_source");
}

ClusteringFlow::~ClusteringFlow() = default;

void ClusteringFlow::Accept(OperatorVisitor& visitor) {
    visitor.VisitClusteringFlow(*this);
}

uint64_t ClusteringFlow::GetCursor() const {
    return m_cursor.load(std::memory_order_relaxed);
}

uint64_t ClusteringFlow::GetPreviousCursor() const {
    return m_previousCursor.load(std::memory_order_relaxed);
}

void ClusteringFlow::ResetCursor() {
    try {
        DataFlow::ResetCursor();
    } catch (const QVE_OutOfRange&) {
        throw QVE_OutOfRange(status::ClusteringFlow_ResetCursor, "ClusteringFlow::ResetCursor");
    }
    for (Queue& queue : m_queues) {
        for (Page& page : queue.pages) m_free.push_back(std::move(page));
        queue = Queue();
    }
    if (!m_shown.columns.empty()) m_free.push_back(std::move(m_shown));
    m_shown = Page();
    m_shownFrom = 0;
    m_full = 0;
    m_waiting = 0;
    m_exhausted = false;
    m_cursor.store(0, std::memory_order_relaxed);
    m_previousCursor.store(0, std::memory_order_relaxed);
    SetPage(0);
}

RefCntPtr<Column> ClusteringFlow::LoadColumn(const std::wstring& name) const {
    if (!m_source->HasColumn(name)) {
        throw QVE_OutOfRange(status::ClusteringFlow_LoadColumn, "ClusteringFlow::LoadColumn: " + narrow(name));
    }
    const RefCntPtr<Column> source = m_source->GetColumn(name);
    return MakeRef<Column>(PageGatherer::PageProperties(*source), nullptr, source->GetDict());
}

RefCntPtr<Column> ClusteringFlow::LookupColumn(const std::wstring& name) const {
    return MakeRef<Column>(PageGatherer::PageProperties(*m_source->DescribeColumn(name)));
}

// The next page of the source and the clusters of its rows.
bool ClusteringFlow::NextBlock(unsigned pageSize) {
    if (m_exhausted) return false;
    if (!m_bound) {
        m_remainder->AllocateColumn(m_source.get());
        m_bound = true;
    }
    m_exhausted = m_source->Next(pageSize) == 0;
    if (m_exhausted) return false;
    m_remainder->Evaluate(m_source->GetSelectionCount(), m_source->GetExtent(), m_source->GetSelection(),
                          m_source.get());
    return true;
}

void ClusteringFlow::DistributeTuples(unsigned pageSize) {
    const unsigned count = m_source->GetSelectionCount();
    const unsigned* const selection = m_source->GetSelection();
    const bigint* const remainders = m_remainder->GetResult().values<bigint>();
    const bool constant = m_remainder->GetPrimitiveStorage() == Column::storageVal;
    const auto clusters = static_cast<bigint>(m_queues.size());
    const auto cluster_of = [&](unsigned row) -> size_t {
        const bigint remainder = remainders[constant ? 0 : row];
        if (is_null(remainder)) return 0;
        return static_cast<size_t>(remainder < 0 ? remainder + clusters : remainder);
    };
    const auto row_at = [&](unsigned i) { return selection ? selection[i] : i; };

    m_starts.assign(m_queues.size() + 1, 0);
    for (unsigned i = 0; i < count; ++i) ++m_starts[cluster_of(row_at(i)) + 1];
    for (size_t c = 1; c < m_starts.size(); ++c) m_starts[c] += m_starts[c - 1];
    m_rows.resize(count);
    // Each start moves on to the end of its cluster, which is the start of the next one.
    for (unsigned i = 0; i < count; ++i) m_rows[m_starts[cluster_of(row_at(i))]++] = row_at(i);
    unsigned first = 0;
    for (size_t c = 0; c < m_queues.size(); ++c) {
        if (m_starts[c] > first) Add(m_queues[c], m_rows.data() + first, m_starts[c] - first, pageSize);
        first = m_starts[c];
    }
}

void ClusteringFlow::Add(Queue& queue, const unsigned* rows, unsigned count, unsigned pageSize) {
    queue.rows += count;
    m_waiting += count;
    while (count > 0) {
        Page& page = OpenPage(queue, pageSize);
        const unsigned take = std::min(count, pageSize - page.rows);
        for (const auto& column : page.columns) column->Overlay(page.rows, 0, take, rows);
        page.rows += take;
        if (page.rows == pageSize) {
            page.closed = true;
            ++m_full;
        }
        rows += take;
        count -= take;
    }
}

// The page of a queue that the next rows go to.
ClusteringFlow::Page& ClusteringFlow::OpenPage(Queue& queue, unsigned pageSize) {
    if (!queue.pages.empty() && !queue.pages.back().closed) {
        Page& last = queue.pages.back();
        const bool fits = last.rows < pageSize && std::all_of(last.columns.begin(), last.columns.end(),
                                                              [](const auto& column) { return column->Fits(); });
        if (fits) return last;
        last.closed = true;
        ++m_full;
    }
    if (m_free.empty()) {
        Page made;
        for (const auto& entry : m_columns) {
            const RefCntPtr<Column> source = m_source->GetColumn(entry.first);
            made.columns.push_back(MakeRef<PageGatherer>(
                source, MakeRef<Column>(PageGatherer::PageProperties(*source), nullptr, source->GetDict())));
        }
        m_free.push_back(std::move(made));
    }
    Page& page = queue.pages.emplace_back(std::move(m_free.back()));
    m_free.pop_back();
    page.rows = 0;
    page.closed = false;
    page.cursor = m_source->GetPreviousCursor();
    for (const auto& column : page.columns) column->Adopt();
    return page;
}

// The first page of the fullest queue.
ClusteringFlow::Page ClusteringFlow::TakePage() {
    const auto fullest = std::max_element(m_queues.begin(), m_queues.end(),
                                          [](const Queue& a, const Queue& b) { return a.rows < b.rows; });
    m_cluster = static_cast<unsigned>(fullest - m_queues.begin());
    Page page = std::move(fullest->pages.front());
    fullest->pages.pop_front();
    if (page.closed) --m_full;
    fullest->rows -= page.rows;
    m_waiting -= page.rows;
    return page;
}

// Shows the next rows of the page that was taken.
unsigned ClusteringFlow::ShowPage(unsigned pageSize) {
    const unsigned extent = std::min(pageSize, m_shown.rows - m_shownFrom);
    size_t place = 0;
    for (const auto& entry : m_columns) {
        const RefCntPtr<Column> column = GetColumn(entry.first);
        Column& page = *m_shown.columns[place++]->GetOutput();
        page.Seek(m_shownFrom, extent);
        if (column->GetTokenSize() != page.GetTokenSize()) {
            column->SetProperty(usrpropkey::storagewidth, std::to_wstring(page.GetTokenSize()));
        }
        column->ShareStreams(page);
        column->SetFlags(0);
    }
    m_shownFrom += extent;
    m_cursor.store(m_shown.cursor, std::memory_order_relaxed);
    return SetPage(extent);
}

unsigned ClusteringFlow::Next(unsigned pageSize) {
    m_previousCursor.store(GetCursor(), std::memory_order_relaxed);
    if (pageSize == 0) return SetPage(0);
    if (m_shownFrom < m_shown.rows) return ShowPage(pageSize);
    if (!m_shown.columns.empty()) m_free.push_back(std::move(m_shown));
    m_shown = Page();
    m_shownFrom = 0;
    while (!HasReadyQueue() && NextBlock(pageSize)) DistributeTuples(pageSize);
    if (m_waiting == 0) {
        m_cursor.store(m_source->GetCursor(), std::memory_order_relaxed);
        return SetPage(0);
    }
    m_shown = TakePage();
    return ShowPage(pageSize);
}

}  // namespace qve
