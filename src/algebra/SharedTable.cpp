#include "algebra/SharedTable.h"

#include <exception>
#include <mutex>
#include <vector>

#include "algebra/OperatorVisitor.h"
#include "algebra/status.h"
#include "storage/Column.h"
#include "system/QuillonException.h"
#include "system/unicode.h"

namespace qve {

// The table and what all its views agree on; under the mutex, as a table is used by one thread at a time.
struct SharedTable::Family {
    explicit Family(RefCntPtr<Table> shared) : table(std::move(shared)), guid(DataStream::Guid::Next()) {}

    const RefCntPtr<Table> table;
    const DataStream::Guid guid;
    std::mutex mutex;
    bool built = false;
    std::exception_ptr fault;  // a table whose build was broken off is no table
};

SharedTable::SharedTable(RefCntPtr<Table> source, SharedTable* family)
    : m_family(family   ? family->m_family
               : source ? std::make_shared<Family>(std::move(source))
                        : nullptr) {
    if (!m_family) throw QVE_InvalidArgument(status::SharedTable_source, "SharedTable::SharedTable: No source");
}

SharedTable::~SharedTable() = default;

void SharedTable::Accept(OperatorVisitor& visitor) {
    visitor.VisitSharedTable(*this);
}

DataStream::Guid SharedTable::GetFamilyGuid() const {
    return m_family->guid;
}

const RefCntPtr<Table>& SharedTable::GetSource() const {
    return m_family->table;
}

ColumnNames SharedTable::GetColumnNames() const {
    const std::lock_guard lock(m_family->mutex);
    return m_family->table->GetColumnNames();
}

bool SharedTable::HasColumn(const std::wstring& name) const {
    const std::lock_guard lock(m_family->mutex);
    return m_family->table->HasColumn(name);
}

unsigned SharedTable::GetColumnCount() const {
    const std::lock_guard lock(m_family->mutex);
    return m_family->table->GetColumnCount();
}

// What the view showed before the table was built may have been empty.
void SharedTable::Refresh(View& view, const Column& shared) {
    const RefCntPtr<DataStream>& data = shared.GetData();
    if (view.data == data.get() && (!data || view.size == data->GetSize())) return;
    view.data = data.get();
    view.size = data ? data->GetSize() : 0;
    const RefCntPtr<Column> fork = shared.Fork(true);
    if (!view.column) {
        view.column = fork;
        return;
    }
    std::vector<usrpropkey> gone;
    for (const auto& property : view.column->GetProperties()) {
        if (!fork->HasProperty(property.first)) gone.push_back(property.first);
    }
    for (const usrpropkey key : gone) view.column->ClearProperty(key);
    for (const auto& property : fork->GetProperties()) view.column->SetProperty(property.first, property.second);
    if (fork->GetDict()) view.column->SetDict(fork->GetDict());
    view.column->SetData(fork->GetData());
}

RefCntPtr<Column> SharedTable::GetColumn(const std::wstring& name) const {
    const auto found = m_views.find(name);
    if (found != m_views.end()) return found->second.column;
    const std::lock_guard lock(m_family->mutex);
    if (!m_family->table->HasColumn(name)) {
        throw QVE_OutOfRange(status::SharedTable_GetColumn, "SharedTable::GetColumn: " + narrow(name));
    }
    const RefCntPtr<Column> shared = m_family->table->GetColumn(name);
    View view;
    Refresh(view, *shared);
    if (!view.column) view.column = shared->Fork(true);
    return m_views.emplace(name, std::move(view)).first->second.column;
}

RefCntPtr<Column> SharedTable::DescribeColumn(const std::wstring& name) const {
    const auto found = m_views.find(name);
    if (found != m_views.end()) return found->second.column;
    const std::lock_guard lock(m_family->mutex);
    if (!m_family->table->HasColumn(name)) {
        throw QVE_OutOfRange(status::SharedTable_DescribeColumn, "SharedTable::DescribeColumn: " + narrow(name));
    }
    return MakeRef<Column>(m_family->table->DescribeColumn(name)->GetProperties());
}

uint64_t SharedTable::GetStart() const {
    const std::lock_guard lock(m_family->mutex);
    return m_family->table->GetStart();
}

uint64_t SharedTable::GetCount() const {
    return m_count;
}

uint64_t SharedTable::Build(unsigned pageSize) {
    if (m_built) return m_count;
    const std::lock_guard lock(m_family->mutex);
    if (m_family->fault) std::rethrow_exception(m_family->fault);
    if (!m_family->built) {
        try {
            m_family->table->Build(pageSize);
        } catch (...) {
            m_family->fault = std::current_exception();
            throw;
        }
        m_family->built = true;
    }
    for (auto& [name, view] : m_views) Refresh(view, *m_family->table->GetColumn(name));
    m_count = m_family->table->GetCount();
    m_built = true;
    return m_count;
}

}  // namespace qve
