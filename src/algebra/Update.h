#pragma once

#include <string>
#include <utility>
#include <vector>

#include "algebra/DataFlow.h"
#include "algebra/Exp.h"

namespace qve {

/// Puts the values of columns in the place of others, which keep their names and types: a value is converted where its
/// type is another one. All other columns pass.
class Update : public DataFlow {
public:
    /// Name of a column to be replaced, and of the one that replaces it.
    using Pairs = std::vector<std::pair<std::wstring, std::wstring>>;

    /// Raises QVE_InvalidArgument 40347 when `source` is null, and QVE_OutOfRange 40348 for a name that it has not or
    /// a column that is replaced twice.
    Update(RefCntPtr<DataFlow> source, Pairs pairs);
    ~Update() override;

    void Accept(OperatorVisitor& visitor) override;
    unsigned Next(unsigned pageSize) override;
    RefCntPtr<Column> LoadColumn(const std::wstring& name) const override;
    RefCntPtr<Column> LookupColumn(const std::wstring& name) const override;

    const Pairs& GetPairs() const { return m_pairs; }

private:
    Exp* FindExpression(const std::wstring& name) const;

    const Pairs m_pairs;
    std::vector<RefCntPtr<Exp>> m_expressions;  // by pair
    bool m_bound = false;
};

}  // namespace qve
