#pragma once

#include <memory>

#include "algebra/CollectingExp.h"

namespace qve {

/// Variances, covariances and correlations in one pass: the mean of each group and the sums of products of deviations
/// from it are brought up to date with each value, which is as stable as a second pass over the values. Only rows count
/// in which all arguments are present. A result that would divide by zero is null.
class MomentsExp : public CollectingExp {
public:
    /// What is to be found; the words are those of the language.
    enum class Statistic { var, varp, covar, covarp, corr };

    /// The statistic of a word; nothing for any other word.
    static const Statistic* Find(const std::wstring& word);
    /// How many arguments a statistic takes.
    static size_t CountArguments(Statistic statistic) { return statistic <= Statistic::varp ? 1 : 2; }

    /// The arguments are doubles. Binding raises 40358 for other types.
    MomentsExp(const std::wstring& name, const std::wstring& word, Statistic statistic, Arguments arguments);
    ~MomentsExp() override;

    void Aggregate(unsigned count, input_column groups, const unsigned* sel) override;
    void FinishAggregate(uint64_t groups, const ProgressCallback* progress) override;

protected:
    void MakePrimitiveColumn() override;

private:
    class Groups;
    template <class M>
    class GroupsOf;

    const Statistic m_statistic;
    std::unique_ptr<Groups> m_groups;
};

}  // namespace qve
