#pragma once

#include <string>
#include <vector>

#include "algebra/DataFlow.h"
#include "algebra/Exp.h"

namespace qve {

/// Adds computed columns to those of its source. An expression may hide a column of the source by taking its name.
class Project : public DataFlow {
public:
    /// Each expression carries the name of its column, and sees the columns of the source only.
    Project(RefCntPtr<DataFlow> source, std::vector<RefCntPtr<Exp>> expressions);
    ~Project() override;

    void Accept(OperatorVisitor& visitor) override;
    /// Computes the selected rows of every expression.
    unsigned Next(unsigned pageSize) override;
    RefCntPtr<Column> LoadColumn(const std::wstring& name) const override;
    RefCntPtr<Column> LookupColumn(const std::wstring& name) const override;

    const std::vector<RefCntPtr<Exp>>& GetExpressions() const { return m_expressions; }

private:
    /// An expression with one value for all rows, as a column that has it in each row.
    struct Spread {
        RefCntPtr<Exp> expression;
        RefCntPtr<Column> column;
    };

    RefCntPtr<Exp> Find(const std::wstring& name) const;
    void TakeErrors() const;
    void FillSpread(Spread& spread) const;

    const std::vector<RefCntPtr<Exp>> m_expressions;
    mutable std::vector<Spread> m_spreads;
    bool m_allocated = false;
};

}  // namespace qve
