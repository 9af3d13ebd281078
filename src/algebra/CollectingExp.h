#pragma once

#include <algorithm>

#include "algebra/AggrExp.h"
#include "storage/Column.h"
#include "types/usrprops.h"

namespace qve {

/// An aggregate without a kernel: it gathers what it needs of all rows, in memory, and knows its results only when the
/// groups are complete. Its arguments are evaluated by page, and FinishAggregate must be called.
class CollectingExp : public AggrExp {
public:
    void Evaluate(unsigned count, unsigned extent, const unsigned* sel, const Namespace* input) override;
    bool NeedsFinish() const override { return true; }

protected:
    CollectingExp(const std::wstring& name, const std::wstring& op, Arguments arguments)
        : AggrExp(name, op, std::move(arguments), false) {}

    /// The empty column of results, of the type that `properties` describe, under the node's name.
    void MakeResultColumn(usrprops properties);
    /// Writes `result(group)`, a T as wide as the column's cells, for the groups from 0 to `groups` - 1.
    template <class T, class Result>
    void StoreResults(uint64_t groups, Result result) const {
        for (uint64_t done = 0; done < groups;) {
            m_column->Seek(done, 1);
            const uint64_t limit = std::min<uint64_t>(m_column->GetLimit(), groups - done);
            T* const cells = m_column->GetOutput().values<T>();
            for (uint64_t i = 0; i < limit; ++i) cells[i] = result(done + i);
            done += limit;
        }
    }
};

}  // namespace qve
