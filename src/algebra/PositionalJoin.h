#pragma once

#include <cstdint>
#include <string>

#include "algebra/Table.h"

namespace qve {

/// Two tables side by side: row i is row i of both. A column that both have is the first one's.
class PositionalJoin : public Table {
public:
    /// One of the tables may be null. Raises QVE_InvalidArgument 40309 when both are.
    PositionalJoin(RefCntPtr<Table> first, RefCntPtr<Table> second);
    ~PositionalJoin() override;

    void Accept(OperatorVisitor& visitor) override;
    ColumnNames GetColumnNames() const override;
    bool HasColumn(const std::wstring& name) const override;
    /// Raises 40311 for a name that neither has, and what the tables raise.
    RefCntPtr<Column> GetColumn(const std::wstring& name) const override;
    unsigned GetColumnCount() const override;
    RefCntPtr<Column> DescribeColumn(const std::wstring& name) const override;
    uint64_t GetStart() const override;
    uint64_t GetCount() const override;
    /// Builds both. Raises logic error 40310 when their rows differ in number, or in where they begin.
    uint64_t Build(unsigned pageSize) override;

    /// Null for an input that is not there.
    const RefCntPtr<Table>& GetFirst() const { return m_first; }
    const RefCntPtr<Table>& GetSecond() const { return m_second; }

private:
    const Table& Leading() const { return m_first ? *m_first : *m_second; }
    const Table& Owner(const std::wstring& name) const;

    const RefCntPtr<Table> m_first;
    const RefCntPtr<Table> m_second;
};

}  // namespace qve
