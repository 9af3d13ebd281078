#include "commands/DescribeTable.h"

#include "commands/Listing.h"

namespace qve {

DescribeTable::DescribeTable(RefCntPtr<Database> database, std::wstring schema, std::wstring table)
    : m_database(std::move(database)), m_schema(std::move(schema)), m_table(std::move(table)) {}

RefCntPtr<Namespace> DescribeTable::Execute(unsigned) {
    std::vector<std::wstring> names, types, descriptions;
    for (const std::wstring& column : m_database->GetColumnNames(m_table, m_schema)) {
        const usrprops properties = m_database->DescribeColumn(column, m_table, m_schema);
        std::wstring description;
        for (const auto& [key, value] : OrderedUserProperties(properties)) {
            if (key == usrpropkey::name || key == usrpropkey::type) continue;
            if (!description.empty()) description += L", ";
            description += UsrPropKey_ToString(key) + L"=" + value;
        }
        names.push_back(column);
        types.emplace_back(properties.text(usrpropkey::type));
        descriptions.push_back(std::move(description));
    }
    Listing listing(L"COLUMNS");
    listing.AddTexts(L"NAME", names);
    listing.AddTexts(L"TYPE", types);
    listing.AddTexts(L"PROPERTIES", descriptions);
    return listing.Finish();
}

}  // namespace qve
