#pragma once

#include <string>

#include "system/RefCntPtr.h"
#include "types/usrprops.h"
#include "vql/syntax/VQLDataType.h"
#include "vql/syntax/VQLIdentifier.h"

namespace qve {

/// A column that a table or query yields: its name, its type, and the properties that the catalog or an expression
/// gave.
class VQLColumn : public RefCntObject {
public:
    VQLColumn(VQLIdentifier name, VQLDataType type, usrprops properties = {})
        : m_name(std::move(name)), m_type(type), m_properties(std::move(properties)) {}

    const VQLIdentifier& GetName() const { return m_name; }
    VQLDataType GetDataType() const { return m_type; }

    const usrprops& GetProperties() const { return m_properties; }
    void SetProperties(usrprops properties) { m_properties = std::move(properties); }
    void SetProperty(usrpropkey key, std::wstring_view value) { m_properties.set(key, value); }
    void ClearProperty(usrpropkey key) { m_properties.erase(key); }
    bool HasProperty(usrpropkey key) const { return m_properties.has(key); }
    /// Throws QVE_RangeError when the property is absent.
    const std::wstring& GetProperty(usrpropkey key) const;
    /// The leading decimal digits of a property, after blanks; 0 when there are none. Throws as GetProperty.
    unsigned long long GetSizeProperty(usrpropkey key) const;
    /// Bytes per row of the stored column: `storagewidth`, or `size` where there is none.
    unsigned long long GetDataWidth() const;

private:
    VQLIdentifier m_name;
    VQLDataType m_type;
    usrprops m_properties;
};

}  // namespace qve
