// The loading of a join's inner table into a grouping.

#include <algorithm>
#include <memory>
#include <numeric>

#include "algebra/Grouping.h"
#include "algebra/OperatorProgressCallback.h"
#include "algebra/Scan.h"
#include "algebra/status.h"
#include "algebra/without_nulls.h"
#include "storage/Column.h"
#include "system/QuillonException.h"

namespace qve {

namespace {

// The chains of inner rows with equal keys, in the order of the rows.
class LinkChains {
public:
    LinkChains(Column& links, uint64_t rows) : m_tails(rows) {
        std::iota(m_tails.begin(), m_tails.end(), 0u);
        links.Seek(0, rows);
        m_next = links.GetOutput().values<unsigned>();
    }
    // Puts `row` behind the rows of the group.
    void Append(unsigned group, unsigned row) {
        m_next[m_tails[group]] = row;
        m_tails[group] = row;
    }

private:
    std::vector<unsigned> m_tails;  // by group: its last row so far
    unsigned* m_next;
};

}  // namespace

uint64_t Grouping::BuildInner(Table& inner, unsigned pageSize) {
    const uint64_t rows = inner.Build(pageSize);
    if (rows >= noGroup - 1) throw QVE_RangeError(status::Grouping_HashInner, "Grouping::HashInner: too many rows");
    return rows;
}

bool Grouping::HashInner(const RefCntPtr<Table>& inner, const Namespace& keys, const std::vector<std::wstring>& names,
                         unsigned pageSize, const ProgressCallback* progress) {
    const uint64_t rows = BuildInner(*inner, pageSize);
    const auto scan = MakeRef<Scan>(inner, ColumnNames(names.begin(), names.end()));
    const RefCntPtr<DataFlow> flow =
        m_semantics == CompareSemantics::nullsDiffer ? without_nulls(scan, names) : RefCntPtr<DataFlow>(scan);
    const RefCntPtr<Context> context = MakeInnerContext(flow.get(), &keys);
    SetSize(static_cast<unsigned>(rows));

    std::vector<unsigned> misses(size_t{pageSize} + 1);
    std::vector<unsigned> inserts(size_t{pageSize} + 1);
    std::vector<unsigned> groups(pageSize);
    std::unique_ptr<LinkChains> chains;
    while (const unsigned extent = flow->Next(pageSize)) {
        OperatorProgressCallback::Check(progress);
        const unsigned count = flow->GetSelectionCount();
        if (count == 0) continue;
        const unsigned* sel = flow->GetSelection();
        const auto base = static_cast<unsigned>(scan->GetPreviousCursor());
        const input_column hashes = HashInsert(count, extent, sel, context.get());
        unsigned char flags = 0;
        const output_column out{groups.data(), nullptr, sizeof(unsigned), extent, &flags};
        unsigned inserted = 0;
        unsigned missing = Probe(count, misses.data(), out, hashes, sel, context.get());
        const bool single = flags & column_flags::constant;
        while (missing > 0) {
            if (!Accepts(missing, misses.data(), hashes)) return false;
            const unsigned found = FindInserts(missing, inserts.data(), misses.data(), hashes);
            for (unsigned i = 0; i < found; ++i) groups[inserts[i]] = base + inserts[i];
            InsertInner(found, inserts.data(), hashes, base);
            inserted += found;
            missing = Probe(missing - found, misses.data(), out, hashes, misses.data(), context.get());
        }
        if (inserted == count) continue;
        if (single) std::fill_n(groups.begin(), extent, groups[sel ? sel[0] : 0]);
        if (!chains) {
            MakeLinkColumn(rows);
            chains = std::make_unique<LinkChains>(*m_links, rows);
        }
        for (unsigned i = 0; i < count; ++i) {
            const unsigned row = sel ? sel[i] : i;
            if (groups[row] != base + row) chains->Append(groups[row], base + row);
        }
    }
    return true;
}

}  // namespace qve
