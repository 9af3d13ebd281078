#include "vql/eval/LeafColumns.h"

#include <algorithm>

#include "algebra/ColumnExp.h"
#include "algebra/Project.h"
#include "algebra/Restrict.h"
#include "storage/Column.h"
#include "vql/VQLQueries.h"

namespace qve {

namespace {

VQLIdentifierSet OutputColumns(const VQLQuery& query) {
    VQLIdentifierSet columns;
    for (const auto& column : query.GetColumnSpace()->GetColumns()) columns.insert(column->GetName());
    return columns;
}

// The output columns of a leaf that are wanted.
template <class Leaf>
VQLIdentifierSet ScannedColumns(const Leaf& query) {
    const VQLIdentifierSet& scanned = query.GetScanColumns();
    return scanned.empty() ? OutputColumns(query) : scanned;
}

}  // namespace

ColumnNames ColumnNamesOf(const VQLIdentifierSet& names) {
    ColumnNames result;
    for (const auto& name : names) result.insert(name.GetComponents().back().AsString());
    return result;
}

LeafColumns::LeafColumns(const VQLTableQuery& query) : LeafColumns(ScannedColumns(query), query.GetColumnMap()) {}
LeafColumns::LeafColumns(const VQLTextQuery& query) : LeafColumns(ScannedColumns(query), query.GetColumnMap()) {}
LeafColumns::LeafColumns(const VQLDomainQuery& query) : LeafColumns(ScannedColumns(query), query.GetColumnMap()) {}

LeafColumns::LeafColumns(const VQLIndexTableQuery& query) : LeafColumns(OutputColumns(query), query.GetColumnMap()) {}

LeafColumns::LeafColumns(const VQLIdentifierSet& scanned, const VQLColumnMap& columns) : shown(ColumnNamesOf(scanned)) {
    for (const auto& column : scanned) {
        const std::wstring& outer = column.GetComponents().back().AsString();
        const std::wstring& inner = columns.PartialRemap(column).GetComponents().back().AsString();
        stored.insert(inner);
        if (inner != outer) renames.emplace_back(inner, outer);
    }
}

RefCntPtr<DataFlow> LeafColumns::Apply(RefCntPtr<DataFlow> flow) const {
    if (IsTrivial()) return flow;
    std::vector<RefCntPtr<Exp>> columns;
    for (const auto& [inner, outer] : renames) {
        columns.push_back(MakeRef<ColumnExp>(flow->DescribeColumn(inner)));
        columns.back()->SetName(outer);
    }
    return MakeRef<Restrict>(MakeRef<Project>(std::move(flow), std::move(columns)), shown);
}

const std::wstring& LeafColumns::GetStored(const std::wstring& name) const {
    const auto found =
        std::find_if(renames.begin(), renames.end(), [&name](const auto& pair) { return pair.second == name; });
    return found == renames.end() ? name : found->first;
}

}  // namespace qve
