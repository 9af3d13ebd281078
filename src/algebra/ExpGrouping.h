#pragma once

#include <vector>

#include "algebra/Exp.h"
#include "algebra/Grouping.h"

namespace qve {

/// A grouping by the value of an expression over the key columns: their hash, or the key itself packed into a number.
class ExpGrouping : public Grouping {
public:
    /// Binds the expressions to the rows on first use.
    class ExpContext : public Context {
    public:
        using Context::Context;
        /// Evaluates `expression` over the page.
        input_column Evaluate(Exp& expression, unsigned count, unsigned extent, const unsigned* sel);

    private:
        std::vector<const Exp*> m_bound;
    };

    /// The expressions for the rows that are looked up and for those that may become groups. A tree belongs to one
    /// flow; where one flow does both, both are the same object.
    ExpGrouping(CompareSemantics semantics, RefCntPtr<Exp> probeExp, RefCntPtr<Exp> buildExp);
    ~ExpGrouping() override;

    RefCntPtr<Context> MakeContext(const Namespace* rows, const Namespace* groups) const override;
    input_column HashInsert(unsigned count, unsigned extent, const unsigned* sel, Context* context) const override;
    input_column HashProbe(unsigned count, unsigned extent, const unsigned* sel, Context* context) const override;
    /// The first row of each hash: rows with different hashes have different keys, so that none need be compared.
    unsigned FindInserts(unsigned count, unsigned* inserts, unsigned* retries, input_column hashes) override;

private:
    const RefCntPtr<Exp> m_probeExp;
    const RefCntPtr<Exp> m_buildExp;
    std::vector<unsigned> m_filter;  // by hash: a row that was found, plus 1
};

}  // namespace qve
