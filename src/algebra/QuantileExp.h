#pragma once

#include <memory>

#include "algebra/CollectingExp.h"

namespace qve {

/// The value at a share of the way through the sorted values of a group, null values left out: at position (n - 1) q,
/// by linear interpolation between the two neighbours. Keeps all values in memory until the groups are complete, and
/// finds each result by selection, without a sort.
///
/// Numbers give a double, dates and datetimes a datetime, durations a duration. The value comes as "double",
/// "datetime" or "duration".
class QuantileExp : public CollectingExp {
public:
    static constexpr const wchar_t* opQuantile = L"quantile";

    /// `fraction` is a constant double; below 0, above 1 or null it gives null. Binding raises 40356 for other types.
    QuantileExp(const std::wstring& name, RefCntPtr<Exp> value, RefCntPtr<Exp> fraction);
    ~QuantileExp() override;

    void Aggregate(unsigned count, input_column groups, const unsigned* sel) override;
    void FinishAggregate(uint64_t groups, const ProgressCallback* progress) override;

protected:
    void MakePrimitiveColumn() override;

private:
    class Values;
    template <class T>
    class TypedValues;

    double m_fraction = 0;
    std::unique_ptr<Values> m_values;
};

}  // namespace qve
