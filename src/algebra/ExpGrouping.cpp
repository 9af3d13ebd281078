#include "algebra/ExpGrouping.h"

#include <algorithm>

#include "storage/Column.h"

namespace qve {

ExpGrouping::ExpGrouping(CompareSemantics semantics, RefCntPtr<Exp> probeExp, RefCntPtr<Exp> buildExp)
    : Grouping(semantics), m_probeExp(std::move(probeExp)), m_buildExp(std::move(buildExp)) {}
ExpGrouping::~ExpGrouping() = default;

RefCntPtr<Grouping::Context> ExpGrouping::MakeContext(const Namespace* rows, const Namespace* groups) const {
    return MakeRef<ExpContext>(rows, groups);
}

input_column ExpGrouping::ExpContext::Evaluate(Exp& expression, unsigned count, unsigned extent, const unsigned* sel) {
    if (std::find(m_bound.begin(), m_bound.end(), &expression) == m_bound.end()) {
        expression.AllocateColumn(GetRows());
        m_bound.push_back(&expression);
    }
    expression.Evaluate(count, extent, sel, GetRows());
    return expression.GetResult();
}

input_column ExpGrouping::HashInsert(unsigned count, unsigned extent, const unsigned* sel, Context* context) const {
    return static_cast<ExpContext*>(context)->Evaluate(*m_buildExp, count, extent, sel);
}

input_column ExpGrouping::HashProbe(unsigned count, unsigned extent, const unsigned* sel, Context* context) const {
    return static_cast<ExpContext*>(context)->Evaluate(*m_probeExp, count, extent, sel);
}

unsigned ExpGrouping::FindInserts(unsigned count, unsigned* inserts, unsigned* retries, input_column hashes) {
    if (count == 0) return 0;
    size_t size = std::max<size_t>(m_filter.size(), 64);
    while (size < 2 * size_t{count}) size *= 2;
    m_filter.assign(size, 0);

    const unsigned* hash = hashes.values<unsigned>();
    const size_t mask = size - 1;
    unsigned inserted = 0;
    unsigned retried = 0;
    for (unsigned i = 0; i < count; ++i) {
        const unsigned row = retries[i];
        size_t place = (hash[row] ^ hash[row] >> 15) & mask;
        while (m_filter[place] != 0 && hash[m_filter[place] - 1] != hash[row]) place = (place + 1) & mask;
        const bool taken = m_filter[place] != 0;
        if (!taken) m_filter[place] = row + 1;
        inserts[inserted] = row;
        retries[retried] = row;
        inserted += !taken;
        retried += taken;
    }
    return inserted;
}

}  // namespace qve
