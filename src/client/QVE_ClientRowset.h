#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "server/protocol/QVE_InterredValue.h"
#include "server/protocol/QVE_ValueArray.h"
#include "system/RefCntObject.h"
#include "system/RefCntPtr.h"

namespace qve {

class QVE_Client;

/// The result of a statement, and the values of the reply that is being read. One thread at a time.
class QVE_ClientRowset : public RefCntObject {
public:
    QVE_ClientRowset(RefCntPtr<QVE_Client> client, std::uint64_t guid, std::vector<QVE_PropertyList> columns);

    std::size_t GetColumnCount() const noexcept { return m_columns.size(); }
    /// Of a column below GetColumnCount. The first two are "name" and "type".
    const QVE_PropertyList& GetColumnProperties(std::size_t column) const { return m_columns[column]; }
    QVE_PropertyList GetProperties();
    /// Asks the server when all values that came so far were taken.
    bool HasMoreValues();
    /// Copies the views of the next values, at most `maxValues`; gives how many, 0 at the end. They are valid until the
    /// next call.
    std::size_t GetValues(std::size_t maxValues, QVE_Value* values);
    /// All values that are left of this reply, or else those of the next one; none at the end.
    QVE_ValueArray GetValueArray();
    /// Releases the result on the server. Calls afterwards fail.
    void Close();

private:
    void RowsetGetValuesImpl();

    const RefCntPtr<QVE_Client> m_client;
    const std::uint64_t m_guid;
    const std::vector<QVE_PropertyList> m_columns;
    QVE_ValueArray m_buffer;
    bool m_atEnd = false;
    bool m_closed = false;
};

}  // namespace qve
