#pragma once

#include <cstdint>
#include <string>

#include "ingest/BinaryScan.h"
#include "storage/Column.h"

namespace qve {

/// Fills one column of a BinaryScan with the values of the wire. Different inserters may run side by side.
class BinaryScan::Inserter {
public:
    explicit Inserter(RefCntPtr<Column> column) : m_column(std::move(column)) {}
    virtual ~Inserter() = default;

    /// Makes room for a page of `rows` rows.
    virtual void Reset(unsigned rows);
    /// Takes values[0], values[stride], ... as the rows of the page from `firstRow` on.
    virtual void Insert(unsigned count, const QVE_Value* values, size_t stride, unsigned firstRow) = 0;

    const RefCntPtr<Column>& GetColumn() const { return m_column; }
    uint64_t GetErrors() const { return m_errors; }

protected:
    /// Counts the value if it is one that the column could not take.
    void Refuse(const QVE_Value& value) { m_errors += !value.IsNull(); }

    const RefCntPtr<Column> m_column;
    output_column m_page;

private:
    uint64_t m_errors = 0;
};

}  // namespace qve
