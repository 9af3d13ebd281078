#pragma once

#include <string>
#include <vector>

#include "types/usrprops.h"
#include "vql/VQLColumnMap.h"
#include "vql/VQLQuery.h"

namespace qve {

/// The rows that another server gives.
class VQLRemoteQuery : public VQLQuery {
public:
    VQLRemoteQuery(VQLPosition position, std::wstring name, std::vector<usrprops> schema,
                   usrprops remoteProperties = {}, VQLIdentifierSet scanColumns = {}, VQLColumnMap columnMap = {});
    void Accept(VQLQueryVisitor& visitor) override;

    const std::wstring& GetName() const { return m_name; }
    const std::vector<usrprops>& GetSchema() const { return m_schema; }
    const usrprops& GetRemoteProperties() const { return m_remoteProperties; }
    const VQLIdentifierSet& GetScanColumns() const { return m_scanColumns; }
    const VQLColumnMap& GetColumnMap() const { return m_columnMap; }

private:
    std::wstring m_name;
    std::vector<usrprops> m_schema;
    usrprops m_remoteProperties;
    VQLIdentifierSet m_scanColumns;
    VQLColumnMap m_columnMap;
};

}  // namespace qve
