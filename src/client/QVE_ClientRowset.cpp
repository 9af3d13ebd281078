#include "client/QVE_ClientRowset.h"

#include <algorithm>
#include <utility>

#include "client/QVE_Client.h"
#include "client/status.h"
#include "system/QuillonException.h"

namespace qve {

QVE_ClientRowset::QVE_ClientRowset(RefCntPtr<QVE_Client> client, std::uint64_t guid,
                                   std::vector<QVE_PropertyList> columns)
    : m_client(std::move(client)), m_guid(guid), m_columns(std::move(columns)) {}

QVE_PropertyList QVE_ClientRowset::GetProperties() {
    return m_client->RowsetGetProperties(m_guid);
}

void QVE_ClientRowset::RowsetGetValuesImpl() {
    if (m_closed) throw QVE_LogicError(status::Client_Argument, "rowset closed");
    m_client->RowsetGetValues(m_guid, m_buffer);
    m_atEnd = m_buffer.GetNumValues() == 0;
}

bool QVE_ClientRowset::HasMoreValues() {
    if (m_buffer.GetConsumed() < m_buffer.GetNumValues()) return true;
    if (!m_atEnd) RowsetGetValuesImpl();
    return !m_atEnd;
}

std::size_t QVE_ClientRowset::GetValues(std::size_t maxValues, QVE_Value* values) {
    if (!HasMoreValues()) return 0;
    const std::size_t start = m_buffer.GetConsumed();
    const std::size_t count = m_buffer.Consume(maxValues);
    std::copy_n(m_buffer.ReadValues().begin() + start, count, values);
    return count;
}

QVE_ValueArray QVE_ClientRowset::GetValueArray() {
    if (!HasMoreValues()) return {};
    return std::exchange(m_buffer, QVE_ValueArray());
}

void QVE_ClientRowset::Close() {
    if (!std::exchange(m_closed, true)) m_client->RowsetClose(m_guid);
}

}  // namespace qve
