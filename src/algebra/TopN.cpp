#include "algebra/TopN.h"

#include <algorithm>
#include <memory>
#include <numeric>

#include "algebra/CellCopier.h"
#include "algebra/CutoffKey.h"
#include "algebra/LeafTable.h"
#include "algebra/OperatorVisitor.h"
#include "algebra/ProgressCallbackImpl.h"
#include "algebra/TableSorter.h"
#include "algebra/adopt_cells.h"
#include "algebra/status.h"
#include "storage/Column.h"
#include "system/CancelScope.h"
#include "system/QuillonException.h"
#include "system/unicode.h"
#include "telemetry/LogScopeTime.h"

namespace qve {

namespace {

// Candidates are kept beyond the limit, so that not every better row costs a sort.
constexpr uint64_t spareCandidates = 8192;
constexpr uint64_t mostRows = uint64_t{1} << 40;
// Up to this limit the best first keys so far are known at each page.
constexpr uint64_t mostBestWords = uint64_t{1} << 14;

/// The rows of a flow that may be among the best.
class Candidates {
public:
    Candidates(const DataFlow& source, const std::vector<Namespace::SortSpec>& specs, uint64_t limit,
               RefCntPtr<ProgressCallback> progress)
        : m_source(source),
          m_specs(specs),
          m_limit(std::min(limit, mostRows)),
          m_capacity(m_limit + std::max(m_limit, spareCandidates)),
          m_progress(std::move(progress)) {
        for (const std::wstring& name : source.GetColumnNames()) m_columns.push_back(MakeColumn(name));
    }

    uint64_t GetCount() const { return m_count; }

    /// Adds what may count of the page.
    void AddPage() {
        if (!m_bound) Bind();
        unsigned count = m_source.GetSelectionCount();
        const unsigned* rows = m_source.GetSelection();
        if (m_rows.size() <= count) {
            m_rows.resize(count + 1);
            m_words.resize(count + 1);
        }
        if (m_specs.empty()) {
            return Append(static_cast<unsigned>(std::min<uint64_t>(count, m_limit - m_count)), rows);
        }
        // Only the first key is read where it leaves nothing over.
        CutoffKey& first = *m_keys.front();
        first.StartPage();
        if (m_depth > 0 && first.HasWords()) {
            count = first.Filter(count, rows, m_rows.data());
            if (count == 0) return;
            rows = m_rows.data();
        }
        for (size_t k = 1; k < m_keys.size(); ++k) m_keys[k]->StartPage();
        if (m_depth > 0) {
            count = KeepBetter(count, rows);
            rows = m_rows.data();
        }
        if (first.HasWords() && m_limit <= mostBestWords) {
            count = KeepBestWords(count, rows);
            rows = m_rows.data();
        }
        Append(count, rows);
        if (m_count >= m_capacity) SetCutoff(Shrink());
    }

    /// Sorts what was kept and cuts it to the limit.
    void Finish() {
        if (!m_bound) Bind();
        if (!m_specs.empty()) Shrink();
    }

    /// The finished column goes to `target`, which has no streams.
    void Release(size_t index, Column& target) {
        const Column& kept = *m_columns[index].GetTo();
        adopt_cells(target, kept);
        target.SetData(kept.GetData());
        target.Seek(0, 0);
    }

private:
    CellCopier MakeColumn(const std::wstring& name) const {
        const RefCntPtr<Column> from = m_source.GetColumn(name);
        usrprops properties = from->GetProperties();
        // What the flow says of all its rows and of their order is not said of the candidates.
        for (const usrpropkey key : {usrpropkey::encoding, usrpropkey::ordered, usrpropkey::sort_position,
                                     usrpropkey::sort_sense, usrpropkey::unique, usrpropkey::dense}) {
            properties.erase(key);
        }
        properties.set(usrpropkey::name, name);
        properties.set(usrpropkey::storagetype, Column::storageCol);
        return CellCopier(from, MakeRef<Column>(std::move(properties)));
    }

    // A computed column has its dictionary only once there is a page.
    void Bind() {
        m_bound = true;
        for (CellCopier& column : m_columns) column.Bind();
        for (const Namespace::SortSpec& spec : m_specs) {
            const RefCntPtr<Column> from = m_source.GetColumn(spec.name);
            if (from->GetStorageName() == Column::storageVal) continue;  // no row is better than another by it
            m_keys.push_back(std::make_unique<CutoffKey>(from, spec.descending));
        }
        if (m_keys.empty()) m_specs.clear();
        m_bestWords.reserve(std::min(m_limit, mostBestWords));
    }

    // Drops the rows that the cut-off row comes before, or that are equal to it in all keys.
    unsigned KeepBetter(unsigned count, const unsigned* rows) {
        unsigned kept = 0;
        for (unsigned i = 0; i < count; ++i) {
            const unsigned row = rows ? rows[i] : i;
            int order = 0;
            for (size_t k = 0; k < m_depth && order == 0; ++k) order = m_keys[k]->Compare(row);
            m_rows[kept] = row;
            kept += order < 0 || (order == 0 && m_depth < m_keys.size());
        }
        return kept;
    }

    // Takes the first keys of the rows among the best so far, the worst of which is a cut-off when there are as many as
    // the limit, and drops the rows beyond it.
    unsigned KeepBestWords(unsigned count, const unsigned* rows) {
        CutoffKey& first = *m_keys.front();
        first.GetWords(count, rows, m_words.data());
        const bool filled = m_bestWords.size() == m_limit;
        const uint64_t before = filled ? m_bestWords.front() : 0;
        for (unsigned i = 0; i < count; ++i) {
            const uint64_t word = m_words[i];
            if (m_bestWords.size() == m_limit) {
                if (word >= m_bestWords.front()) continue;
                std::pop_heap(m_bestWords.begin(), m_bestWords.end());
                m_bestWords.back() = word;
            } else {
                m_bestWords.push_back(word);
            }
            std::push_heap(m_bestWords.begin(), m_bestWords.end());
        }
        if (m_bestWords.size() < m_limit) return ListRows(count, rows, ~uint64_t{0});
        const uint64_t worst = m_bestWords.front();
        if (!filled || worst != before) {
            // What was known of the further keys was so for another first one.
            first.SetCutoff(worst);
            m_depth = 1;
        }
        return ListRows(count, rows, worst);
    }

    // The rows whose words, which are in m_words, are not above the cut-off, to m_rows, which may be `rows`.
    unsigned ListRows(unsigned count, const unsigned* rows, uint64_t cutoff) {
        unsigned kept = 0;
        for (unsigned i = 0; i < count; ++i) {
            m_rows[kept] = rows ? rows[i] : i;
            kept += m_words[i] <= cutoff;
        }
        return kept;
    }

    void Append(unsigned count, const unsigned* rows) {
        if (count == 0) return;
        if (!rows) {
            std::iota(m_rows.begin(), m_rows.begin() + count, 0u);
            rows = m_rows.data();
        }
        for (CellCopier& column : m_columns) column.Append(count, rows);
        m_count += count;
    }

    // Returns whether the limit is filled.
    bool Shrink() {
        ColumnMap columns;
        for (const CellCopier& column : m_columns) columns.emplace(column.GetTo()->GetName(), column.GetTo());
        const auto table = MakeRef<LeafTable>(L"top", std::move(columns));
        table->Build(0);
        TableSorter sorter(table, m_specs, m_progress);
        const bool moved = sorter.Sort(m_limit);
        for (const CellCopier& column : m_columns) {
            Column& kept = *column.GetTo();
            if (moved) {
                Column sorted(kept.GetProperties());
                sorter.ReorderColumn(kept, sorted);
                kept.SetData(sorted.GetData());
            } else {
                kept.Resize(sorter.GetCount());
            }
        }
        m_count = sorter.GetCount();
        return m_count == m_limit;
    }

    void SetCutoff(bool filled) {
        if (!filled) return;
        for (size_t k = 0, spec = 0; spec < m_specs.size(); ++spec) {
            if (m_source.GetColumn(m_specs[spec].name)->GetStorageName() == Column::storageVal) continue;
            Column& kept = FindKept(m_specs[spec].name);
            kept.Seek(m_limit - 1, 1);
            m_keys[k++]->SetCutoff(kept);
        }
        m_depth = m_keys.size();
    }

    Column& FindKept(const std::wstring& name) {
        return *std::find_if(m_columns.begin(), m_columns.end(), [&](const CellCopier& column) {
                    return column.GetTo()->GetName() == name;
                })->GetTo();
    }

    const DataFlow& m_source;
    std::vector<Namespace::SortSpec> m_specs;
    const uint64_t m_limit;
    const uint64_t m_capacity;
    const RefCntPtr<ProgressCallback> m_progress;
    std::vector<CellCopier> m_columns;
    std::vector<std::unique_ptr<CutoffKey>> m_keys;
    bool m_bound = false;
    size_t m_depth = 0;  // how many keys have a cut-off
    uint64_t m_count = 0;
    std::vector<unsigned> m_rows;
    std::vector<uint64_t> m_words;
    std::vector<uint64_t> m_bestWords;  // a heap, the worst in front
};

}  // namespace

TopN::TopN(RefCntPtr<DataFlow> source, std::vector<SortSpec> specs, uint64_t limit)
    : FlowTable(std::move(source), 0),
      m_specs(std::move(specs)),
      m_limit(limit),
      m_progress(MakeRef<ProgressCallbackImpl>()) {}
TopN::~TopN() = default;

void TopN::Accept(OperatorVisitor& visitor) {
    visitor.VisitTopN(*this);
}

RefCntPtr<Column> TopN::GetColumn(const std::wstring& name) const {
    if (!HasColumn(name)) throw QVE_OutOfRange(status::TopN_GetColumn, "TopN::GetColumn: " + narrow(name));
    RefCntPtr<Column>& column = m_columns[name];
    if (!column) column = LoadColumn(name);
    return column;
}

RefCntPtr<Column> TopN::DescribeColumn(const std::wstring& name) const {
    if (!HasColumn(name)) throw QVE_OutOfRange(status::TopN_DescribeColumn, "TopN::DescribeColumn: " + narrow(name));
    const auto loaded = m_columns.find(name);
    if (loaded != m_columns.end()) return loaded->second;
    RefCntPtr<Column>& description = m_descriptions[name];
    if (!description) description = LookupColumn(name);
    return description;
}

RefCntPtr<Column> TopN::LoadColumn(const std::wstring& name) const {
    return MakeRef<Column>(LookupColumn(name)->GetProperties());
}

RefCntPtr<Column> TopN::LookupColumn(const std::wstring& name) const {
    usrprops properties = GetSource()->DescribeColumn(name)->GetProperties();
    for (const usrpropkey key : {usrpropkey::encoding, usrpropkey::dense, usrpropkey::sum_value, usrpropkey::sum2_value,
                                 usrpropkey::count_value, usrpropkey::median_value}) {
        properties.erase(key);
    }
    properties.set(usrpropkey::name, name);
    properties.set(usrpropkey::storagetype, Column::storageCol);
    const auto column = MakeRef<Column>(std::move(properties));
    TableSorter::UpdateSortProperties(*column, m_specs);
    return column;
}

uint64_t TopN::GetCount() const {
    return m_count;
}

uint64_t TopN::Build(unsigned pageSize) {
    if (m_built) return m_count;
    const CancelScope cancel(m_progress.get());
    const LogScopeTime time("TopN::Build", 1.0);
    const RefCntPtr<DataFlow>& source = GetSource();
    Candidates candidates(*source, m_specs, m_limit, m_progress);
    // Without specs the first rows end the reading.
    if (!m_specs.empty()) pageSize = SourcePageSize(pageSize);
    while (m_limit > 0 && (!m_specs.empty() || candidates.GetCount() < m_limit) && source->Next(pageSize) > 0) {
        if (source->GetSelectionCount() > 0) candidates.AddPage();
    }
    candidates.Finish();
    m_count = candidates.GetCount();
    size_t index = 0;
    for (const std::wstring& name : source->GetColumnNames()) candidates.Release(index++, *GetColumn(name));
    m_built = true;
    return m_count;
}

}  // namespace qve
