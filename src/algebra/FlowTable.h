#pragma once

#include <atomic>
#include <cstdint>
#include <string>

#include "algebra/ColumnWriter.h"
#include "algebra/DataFlow.h"
#include "algebra/Table.h"

namespace qve {

/// Drains a flow into temporary columns, each encoded as its values suggest. The columns of larger pages are written in
/// parallel.
class FlowTable : public Table {
public:
    /// What the encodings mask of a table holds: everything, or only what can be read at any row at little cost.
    static constexpr uint64_t anyEncoding = 0x1F;
    static constexpr uint64_t randomAccess = 0x1A;

    /// `encodings` is the mask of encodings that the columns may take; 0 leaves them plain. Raises 40181 when `source`
    /// is null.
    explicit FlowTable(RefCntPtr<DataFlow> source, uint64_t encodings = anyEncoding,
                       ColumnWriter::Purpose purpose = ColumnWriter::Purpose::intermediate);
    ~FlowTable() override;

    void Accept(OperatorVisitor& visitor) override;
    ColumnNames GetColumnNames() const override;
    bool HasColumn(const std::wstring& name) const override;
    /// Raises 40182.
    RefCntPtr<Column> GetColumn(const std::wstring& name) const override;
    unsigned GetColumnCount() const override;
    /// Raises 40180.
    RefCntPtr<Column> DescribeColumn(const std::wstring& name) const override;

    /// An empty column with the properties of the source's on temporary streams. Raises 40183.
    virtual RefCntPtr<Column> LoadColumn(const std::wstring& name) const;
    /// The source's description. Raises 40184.
    virtual RefCntPtr<Column> LookupColumn(const std::wstring& name) const;

    uint64_t GetStart() const override;
    /// While the table is being built, the rows so far. Any thread may ask.
    uint64_t GetCount() const override;
    uint64_t Build(unsigned pageSize) override;

    /// To be set before Build, which then ends with CancelledException once `progress` says cancelled.
    void SetProgressCallback(RefCntPtr<ProgressCallback> progress) { m_progress = std::move(progress); }

    const RefCntPtr<DataFlow>& GetSource() const { return m_source; }
    uint64_t GetEncodings() const { return m_encodings; }

private:
    using Writers = std::vector<std::unique_ptr<ColumnWriter>>;
    bool WritesAtOnce(unsigned rows) const;
    void WritePages(const Writers& writers, unsigned pageSize);
    void DescribeExecution() const;

    const RefCntPtr<DataFlow> m_source;
    const uint64_t m_encodings;
    const ColumnWriter::Purpose m_purpose;
    RefCntPtr<ProgressCallback> m_progress;
    mutable ColumnMap m_columns;
    std::atomic<uint64_t> m_count{0};  // progress is asked for by other threads
    bool m_built = false;
};

}  // namespace qve
