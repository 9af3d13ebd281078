#pragma once

#include <string>
#include <vector>

#include "algebra/Exp.h"
#include "algebra/KeyChanges.h"

namespace qve {

/// The number of the partition of each row, from 0 on, in a flow where rows of equal keys lie side by side: a row has
/// another number than the row before when one of the keys differs. Pages are to be evaluated in the flow's order.
class PartitionExp : public Exp {
public:
    /// The usual name of its column, ".PARTITION".
    static constexpr const wchar_t* partitionName = L".PARTITION";

    /// `keys` has one expression at least.
    PartitionExp(const std::wstring& name, Arguments keys);

    void Accept(ExpVisitor& visitor) override;
    /// A column of "ulng". Raises 40359 for a key whose cells cannot be compared.
    RefCntPtr<Column> AllocateColumn(const Namespace* input) override;
    /// Raises QVE_RangeError 40360 for more partitions than can be numbered.
    void Evaluate(unsigned count, unsigned extent, const unsigned* sel, const Namespace* input) override;

private:
    void MakeColumn();

    KeyChanges m_changes;
    std::vector<const Exp*> m_keys;  // those that may change
    std::vector<input_column> m_pages;
    unsigned m_partition = ~0u;  // of the last row; before the first one of all
    bool m_bound = false;
};

}  // namespace qve
