#include "vql/VQLTableFacts.h"

#include <algorithm>

namespace qve {

namespace {

VQLSortSense Sense(const VQLColumn& column, usrpropkey key) {
    return column.GetProperties().text(key) == L"asc" ? VQLSortSense::ascending : VQLSortSense::descending;
}

void FindTableUniqueKeys(const VQLColumnSpace& table, VQLDerivedFacts& facts) {
    VQLIdentifierSet primaryKey;
    unsigned long long lastPart = 0;
    for (const RefCntPtr<VQLColumn>& column : table.GetColumns()) {
        const usrprops& properties = column->GetProperties();
        if (properties.has(usrpropkey::unique)) facts.AddUniqueKey({column->GetName()});
        if (properties.has(usrpropkey::primary_key)) {
            primaryKey.insert(column->GetName());
            lastPart = std::max(lastPart, properties.number(usrpropkey::primary_key));
        }
    }
    // With a part missing the rest is no key.
    if (!primaryKey.empty() && primaryKey.size() == lastPart) facts.AddUniqueKey(std::move(primaryKey));
}

void BuildSortSpecsList(const VQLColumnSpace& table, VQLDerivedFacts& facts) {
    std::map<unsigned long long, VQLQuery::SortSpec> byPosition;
    for (const RefCntPtr<VQLColumn>& column : table.GetColumns())
        if (column->HasProperty(usrpropkey::sort_position))
            byPosition[column->GetSizeProperty(usrpropkey::sort_position)] = {column->GetName(),
                                                                              Sense(*column, usrpropkey::sort_sense)};
    VQLQuery::SortSpecs specs;
    for (const auto& [position, spec] : byPosition) specs.push_back(spec);
    facts.AddSort(std::move(specs));
    for (const RefCntPtr<VQLColumn>& column : table.GetColumns())
        if (column->HasProperty(usrpropkey::ordered))
            facts.AddSort({{column->GetName(), Sense(*column, usrpropkey::ordered)}});
}

}  // namespace

VQLDerivedFacts VQLTableFacts(const VQLColumnSpace& table) {
    VQLDerivedFacts facts;
    FindTableUniqueKeys(table, facts);
    BuildSortSpecsList(table, facts);
    return facts;
}

}  // namespace qve
