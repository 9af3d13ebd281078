// The session command "pivot-table".

#include "commands/PivotTable.h"
#include "vql/eval/VQLCommandArguments.h"
#include "vql/eval/VQLQueryEvaluator.h"
#include "vql/eval/VQLSession.h"

namespace qve {
namespace {

// The components of a name that must be there; the command is one word.
std::vector<std::wstring> NameAt(const VQLCommandArguments& args, size_t place, size_t count, const wchar_t* missing,
                                 const wchar_t* wrong) {
    const VQLIdentifier* name = args.Identifier(place);
    if (!name) args.Raise(1, missing);
    if (name->GetComponents().size() != count) args.Raise(1, wrong);
    std::vector<std::wstring> texts;
    for (const auto& component : name->GetComponents()) texts.push_back(component.AsString());
    return texts;
}

}  // namespace

RefCntPtr<Namespace> VQLSession::ExecPivot(const VQLCommandArguments& args) {
    const RefCntPtr<Database> database = CurrentDatabase(args);
    const auto name = NameAt(args, 1, 2, L"Missing table name", L"Identifier is not a table name");
    const auto key = NameAt(args, 2, 1, L"Missing key column", L"Key column name is qualified");
    const auto value = NameAt(args, 3, 1, L"Missing value column", L"Value column name is qualified");
    const auto* list = args.List(4);
    if (!list) args.Raise(1, L"Missing values list");
    std::vector<std::wstring> values;
    for (const RefCntPtr<VQLNode>& node : *list) {
        const auto* column = dynamic_cast<const VQLIdentifierNode*>(node.get());
        if (!column) args.Raise(1, L"Invalid column name in values list");
        const auto& components = column->GetIdentifier().GetComponents();
        if (components.size() != 1) args.Raise(1, L"Column name in values lists is qualified");
        values.push_back(components.front().AsString());
    }
    if (args.size() > 5) args.Raise(1, L"Too many arguments");
    PivotTable::CheckTable(*database, name[0], name[1]);
    const RefCntPtr<Namespace> plan = VQLQueryEvaluator(
        m_databases, m_symbols)(PivotTable::BuildPivotQuery(name[0], name[1], key[0], value[0], values));
    return MakeRef<PivotTable>(database, name[0], name[1], plan);
}

}  // namespace qve
