#pragma once

#include <atomic>
#include <map>
#include <memory>
#include <string>

#include "algebra/Table.h"
#include "storage/stream/DataStream.h"

namespace qve {

/// One view of a table that several flows read, each on a thread of its own. All views of a table are a family: the
/// first that is asked to builds the table, others that come meanwhile wait for it. Every view has columns of its own
/// over the same bytes, so that each can stand at another row.
///
/// The views of one family may be used at the same time; one view by one thread at a time.
class SharedTable : public Table {
public:
    /// A view of `source`, or one more view of the table of `family`; then `source` may be null. Raises
    /// QVE_InvalidArgument 40365 when there is no table.
    explicit SharedTable(RefCntPtr<Table> source, SharedTable* family = nullptr);
    ~SharedTable() override;

    void Accept(OperatorVisitor& visitor) override;
    ColumnNames GetColumnNames() const override;
    bool HasColumn(const std::wstring& name) const override;
    /// Complete once this view is built. Raises 40366.
    RefCntPtr<Column> GetColumn(const std::wstring& name) const override;
    unsigned GetColumnCount() const override;
    /// Raises 40367.
    RefCntPtr<Column> DescribeColumn(const std::wstring& name) const override;
    uint64_t GetStart() const override;
    uint64_t GetCount() const override;
    /// Throws what the build of the table threw, also in the views that come later.
    uint64_t Build(unsigned pageSize) override;

    /// The same for all views of a table, and different for those of another.
    DataStream::Guid GetFamilyGuid() const;
    const RefCntPtr<Table>& GetSource() const;

private:
    struct Family;
    struct View {
        RefCntPtr<Column> column;
        const DataStream* data = nullptr;  // of the table's column, as the view last took it
        uint64_t size = 0;
    };

    static void Refresh(View& view, const Column& shared);

    const std::shared_ptr<Family> m_family;
    mutable std::map<std::wstring, View> m_views;
    std::atomic<uint64_t> m_count{0};  // progress is asked for by other threads
    bool m_built = false;
};

}  // namespace qve
