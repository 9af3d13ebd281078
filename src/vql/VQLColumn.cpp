#include "vql/VQLColumn.h"

#include "system/QuillonException.h"
#include "vql/status.h"

namespace qve {

const std::wstring& VQLColumn::GetProperty(usrpropkey key) const {
    const std::wstring* value = m_properties.get(key);
    if (!value) throw QVE_RangeError(status::VQLColumn_GetProperty, "VQLColumn::GetProperty");
    return *value;
}

unsigned long long VQLColumn::GetSizeProperty(usrpropkey key) const {
    GetProperty(key);
    return m_properties.number(key);
}

unsigned long long VQLColumn::GetDataWidth() const {
    return GetSizeProperty(HasProperty(usrpropkey::storagewidth) ? usrpropkey::storagewidth : usrpropkey::size);
}

}  // namespace qve
