#pragma once

#include <string>
#include <vector>

#include "types/usrprops.h"
#include "vql/VQLColumnMap.h"
#include "vql/VQLQuery.h"

namespace qve {

/// The rows of a delimited text file.
class VQLTextQuery : public VQLQuery {
public:
    /// `schema`: one property set for each column, empty to detect them. `textProperties`: the format, what is absent
    /// is detected.
    VQLTextQuery(VQLPosition position, std::wstring path, std::vector<usrprops> schema = {},
                 usrprops textProperties = {}, VQLIdentifierSet scanColumns = {}, VQLColumnMap columnMap = {});
    void Accept(VQLQueryVisitor& visitor) override;

    const std::wstring& GetPath() const { return m_path; }
    const std::vector<usrprops>& GetSchema() const { return m_schema; }
    const usrprops& GetTextProperties() const { return m_textProperties; }
    const VQLIdentifierSet& GetScanColumns() const { return m_scanColumns; }
    const VQLColumnMap& GetColumnMap() const { return m_columnMap; }

private:
    std::wstring m_path;
    std::vector<usrprops> m_schema;
    usrprops m_textProperties;
    VQLIdentifierSet m_scanColumns;
    VQLColumnMap m_columnMap;
};

}  // namespace qve
