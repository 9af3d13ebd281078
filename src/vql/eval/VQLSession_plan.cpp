#include "algebra/FlowTable.h"
#include "algebra/Scan.h"
#include "algebra/plan/NamespaceBuilder.h"
#include "storage/Database.h"
#include "storage/DatabaseFamily.h"
#include "system/VQLException.h"
#include "vql/eval/ExplainPlan.h"
#include "vql/eval/ResultFlow.h"
#include "vql/eval/VQLCommandArguments.h"
#include "vql/eval/VQLQueryEvaluator.h"
#include "vql/eval/VQLSession.h"
#include "vql/eval/status.h"
#include "vql/syntax/VQLParser.h"

namespace qve {
namespace {

// Files must lie where statements may read them.
class PlanReader : public NamespaceBuilder {
public:
    explicit PlanReader(const DatabaseFamily& databases)
        : NamespaceBuilder(databases.GetDefaultDatabase()), m_databases(databases) {}

private:
    std::wstring ResolveDataFile(const std::wstring& path) const override {
        return m_databases.ResolveDataFilePath(path);
    }

    const DatabaseFamily& m_databases;
};

// The columns of the result in their order: as a restrict at the root lists them, else by name.
std::vector<std::wstring> ResultColumns(const VQLNode& node, const Namespace& plan) {
    const ColumnNames all = plan.GetColumnNames();
    std::vector<std::wstring> names(all.begin(), all.end());
    const auto& form = static_cast<const VQLListNode&>(node).GetNodes();
    if (static_cast<const VQLSymbolNode&>(*form[0]).GetSymbol() != L"restrict") return names;
    std::vector<std::wstring> listed;
    for (const RefCntPtr<VQLNode>& column : static_cast<const VQLListNode&>(*form[1]).GetNodes()) {
        const auto& name = static_cast<const VQLIdentifierNode&>(*column).GetIdentifier();
        listed.push_back(name.GetComponents().front().AsString());
    }
    return listed.size() == names.size() ? listed : names;
}

}  // namespace

RefCntPtr<Namespace> VQLSession::Plan(const std::wstring& text) {
    const RefCntPtr<VQLNode> node = VQLParser::ParseAndReturnFirstNode(
        m_symbols, text.c_str(), true,
        [](RefCntPtr<VQLNode>) { throw VQLException(status::VQLQueryEvaluator_BadInput, L"bad input"); });
    if (!node) return nullptr;
    if (!m_databases.GetDefaultDatabase()) {
        throw VQLException(status::VQLSession_PlanNeedsDatabase, L"must select a database");
    }
    const RefCntPtr<Namespace> plan = PlanReader(m_databases)(node);
    RefCntPtr<DataFlow> flow = DynamicPtrCast<DataFlow>(plan);
    if (!flow) flow = MakeRef<Scan>(StaticPtrCast<Table>(plan));
    return MakeRef<ResultFlow>(std::move(flow), ResultColumns(*node, *plan));
}

// "(explain QUERY)", and "(explain analyze QUERY)", which runs it.
RefCntPtr<Namespace> VQLSession::ExecExplain(const VQLCommandArguments& args) {
    const bool analyze = args.size() > 2 && args.Symbol(1) && *args.Symbol(1) == L"analyze";
    const size_t place = analyze ? 2 : 1;
    if (args.size() != place + 1) args.Raise(1, L"expected a query");
    if (FindCommand(args[place])) {
        throw VQLException(status::VQLSession_ExplainCommand, L"only queries have plans");
    }
    if (!m_databases.GetDefaultDatabase()) {
        throw VQLException(status::VQLSession_ExplainNeedsDatabase, L"must select a database");
    }
    return MakeRef<ExplainPlan>(VQLQueryEvaluator(m_databases, m_symbols)(args[place]),
                                m_databases.GetDefaultDatabase(), analyze);
}

}  // namespace qve
