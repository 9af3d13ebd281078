#pragma once

#include <string>

#include "algebra/MapExp.h"

namespace qve {

/// One link of a chain that hashes several key columns to one 32-bit value per row: the first applies "hash" to its
/// column, each further one folds its column into the result of the link before, in place, by "rehash".
class HashExp : public MapUnaryExp {
public:
    /// `op` is "hash", "rehash", or one of the radix forms. `previous` is null for the first link.
    HashExp(const std::wstring& name, const std::wstring& op, RefCntPtr<Exp> argument, bool tokens,
            RefCntPtr<HashExp> previous);

    void Accept(ExpVisitor& visitor) override;
    RefCntPtr<Column> AllocateColumn(const Namespace* input) override;
    void Evaluate(unsigned count, unsigned extent, const unsigned* sel, const Namespace* input) override;

    const RefCntPtr<HashExp>& GetPrevious() const { return m_previous; }

protected:
    bool IsFunctionOfValues() const override { return !m_previous; }
    /// Each row has a hash of its own, for the next link to fold into.
    bool GivesSingleResult() const override { return false; }

private:
    const RefCntPtr<HashExp> m_previous;
};

}  // namespace qve
