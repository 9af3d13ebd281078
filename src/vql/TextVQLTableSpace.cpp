#include "vql/TextVQLTableSpace.h"

#include "ingest/TextScan.h"
#include "storage/stream/DataStream.h"
#include "vql/VQLColumnSpace.h"

namespace qve {

TextVQLTableSpace::TextVQLTableSpace(SymbolDictionary& dictionary, std::wstring path, std::vector<usrprops> schema,
                                     usrprops properties)
    : m_dictionary(dictionary),
      m_path(std::move(path)),
      m_schema(std::move(schema)),
      m_properties(std::move(properties)) {}

bool TextVQLTableSpace::HasTable(const VQLIdentifier&) const {
    return true;
}

RefCntPtr<VQLTable> TextVQLTableSpace::GetTable(const VQLIdentifier& name) const {
    if (m_table) return m_table;
    const TextScan scan(TextScan::OpenFile(m_path), m_schema, m_properties);
    VQLColumnSpace::Columns columns;
    for (const usrprops& column : scan.GetSchema()) {
        const VQLIdentifier identifier = VQLIdentifier::Unquoted(column.text(usrpropkey::name), m_dictionary);
        columns.push_back(MakeRef<VQLColumn>(identifier, VQLDataTypeFromProps(column), column));
    }
    return m_table = MakeRef<VQLTable>(name, MakeRef<VQLColumnSpace>(std::move(columns)));
}

}  // namespace qve
