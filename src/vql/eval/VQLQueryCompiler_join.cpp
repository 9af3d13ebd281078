#include <algorithm>

#include "algebra/CartProd.h"
#include "algebra/FlowTable.h"
#include "algebra/Join.h"
#include "algebra/LeafTable.h"
#include "algebra/Lookup.h"
#include "algebra/SharedJoinGrouping.h"
#include "storage/Column.h"
#include "system/QuillonException.h"
#include "vql/VQLExpressions.h"
#include "vql/VQLQueries.h"
#include "vql/eval/LeafColumns.h"
#include "vql/eval/VQLQueryCompiler.h"
#include "vql/eval/status.h"
#include "vql/syntax/VQLEvaluatorSettings.h"

namespace qve {

namespace {

const VQLIdentifier& GetJoinKey(const RefCntPtr<VQLExpression>& side) {
    const auto* column = dynamic_cast<const VQLIdentifierExpression*>(side.get());
    if (!column) throw QVE_RuntimeError(status::VQLQueryCompiler_Input, "join expressions must be identifiers");
    return column->GetIdentifier();
}

void CheckDistinct(const Join::NamePairs& keys, std::wstring Join::NamePairs::value_type::*side) {
    for (auto key = keys.begin(); key != keys.end(); ++key) {
        if (std::any_of(keys.begin(), key, [&](const auto& other) { return other.*side == (*key).*side; })) {
            throw QVE_RuntimeError(status::VQLQueryCompiler_Input,
                                   "multiple join comparisons on the same column are not supported");
        }
    }
}

}  // namespace

// A stored table is read where it is, under the names that it has there; anything else is drained.
RefCntPtr<Table> VQLQueryCompiler::CompileInner(const RefCntPtr<VQLQuery>& query, std::vector<std::wstring*> names) {
    if (const auto* stored = dynamic_cast<const VQLTableQuery*>(query.get())) {
        const LeafColumns columns(*stored);
        for (std::wstring* name : names) *name = columns.GetStored(*name);
        return MakeLeafTable(*stored, columns.stored);
    }
    const RefCntPtr<Namespace> inner = Compile(query);
    if (auto flow = DynamicPtrCast<DataFlow>(inner)) return MakeRef<FlowTable>(flow, 0);
    return MakeTable(inner);
}

void VQLQueryCompiler::VisitJoin(VQLJoinQuery& query) {
    if (query.GetJoinType() > VQLJoinType::full) {
        throw QVE_RuntimeError(status::VQLQueryCompiler_JoinType, "Unknown VQL join type");
    }
    Join::NamePairs keys;
    for (const auto& [left, right] : query.GetConditions()) {
        keys.emplace_back(GetIdentifier(GetJoinKey(left)), GetIdentifier(GetJoinKey(right)));
    }
    CheckDistinct(keys, &Join::NamePairs::value_type::first);
    CheckDistinct(keys, &Join::NamePairs::value_type::second);
    Join::NamePairs imports;
    for (const auto& [name, expression] : query.GetImports()) {
        imports.emplace_back(GetIdentifier(GetJoinKey(expression)), GetIdentifier(name));
    }

    RefCntPtr<DataFlow> outer = CompileFlow(query.GetLeft());
    std::vector<std::wstring*> innerNames;
    for (auto& key : keys) innerNames.push_back(&key.second);
    for (auto& import : imports) innerNames.push_back(&import.first);
    RefCntPtr<Table> inner = CompileInner(query.GetRight(), innerNames);
    if (query.IsLookup()) {
        Push(MakeRef<Lookup>(std::move(outer), std::move(inner), std::move(keys), std::move(imports),
                             static_cast<Join::JoinType>(query.GetJoinType()), !query.UseEqualToComparison()));
        return;
    }
    if (keys.empty() && query.GetJoinType() == VQLJoinType::inner) {
        Push(MakeRef<CartProd>(std::move(outer), std::move(inner), std::move(imports)));
        return;
    }
    const auto join = MakeRef<Join>(std::move(outer), std::move(inner), std::move(keys), std::move(imports),
                                    static_cast<Join::JoinType>(query.GetJoinType()), !query.UseEqualToComparison());
    if (VQLEvaluatorSettings::GetUseSharedHashing()) {
        join->SetGrouping(MakeRef<SharedJoinGrouping>(join.get(), join->GetSemantics()));
    }
    Push(join);
}

}  // namespace qve
