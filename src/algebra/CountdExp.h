#pragma once

#include <memory>
#include <vector>

#include "algebra/CollectingExp.h"

namespace qve {

class DistinctCells;

/// The number of different values of a group, nulls left out. Keeps all different values in memory.
class CountdExp : public CollectingExp {
public:
    static constexpr const wchar_t* opCountd = L"countd";

    /// Binding raises 40357 unless CanCount says yes.
    CountdExp(const std::wstring& name, RefCntPtr<Exp> value);
    ~CountdExp() override;

    /// Whether different cells of a column are different values. Two texts of one dictionary may be equal, unless the
    /// dictionary is known to hold each value once.
    static bool CanCount(const Column& column);

    void Aggregate(unsigned count, input_column groups, const unsigned* sel) override;
    void FinishAggregate(uint64_t groups, const ProgressCallback* progress) override;

protected:
    void MakePrimitiveColumn() override;

private:
    unsigned Gather(unsigned count, input_column groups, const unsigned* sel, unsigned firstGroup);

    std::unique_ptr<DistinctCells> m_cells;
    std::vector<uint64_t> m_counts;   // by group
    std::vector<uint64_t> m_values;   // of a page, without nulls
    std::vector<unsigned> m_numbers;  // their groups
};

}  // namespace qve
