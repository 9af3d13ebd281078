#include "vql/VQLQueryParser.h"

#include <limits>
#include <unordered_map>

#include "metrics/Scope.h"
#include "vql/VQLExpressionParser.h"
#include "vql/VQLExpressions.h"
#include "vql/VQLQueries.h"
#include "vql/status.h"
#include "vql/syntax/VQLNodeReader.h"
#include "vql/syntax/VQLParser.h"
#include "vql/syntax/VQLPropertyListParser.h"
#include "vql/syntax/VQLSymbols.h"

namespace qve {

namespace {

using Nodes = VQLNodeReader::Nodes;
using Node = RefCntPtr<VQLNode>;
using Query = RefCntPtr<VQLQuery>;

/// Builds one form after the other. `form` is always the list with the word at index 0, `node` the node of that list.
class Builder {
public:
    explicit Builder(SymbolDictionary& dictionary) : m_dictionary(dictionary) {}

    Query BuildQuery(const Node& node) const;
    VQLBindings BuildBindings(const Node& node) const;

private:
    using Form = Query (Builder::*)(const Node& node, const Nodes& form) const;

    static const std::unordered_map<std::wstring, Form>& Forms();

    Query BuildTable(const Node& node, const Nodes& form) const;
    Query BuildDomain(const Node& node, const Nodes& form) const;
    Query BuildSelect(const Node& node, const Nodes& form) const;
    Query BuildProject(const Node& node, const Nodes& form) const;
    Query BuildRestrict(const Node& node, const Nodes& form) const;
    Query BuildPivot(const Node& node, const Nodes& form) const;
    Query BuildAggregate(const Node& node, const Nodes& form) const;
    Query BuildOrder(const Node& node, const Nodes& form) const;
    Query BuildTop(const Node& node, const Nodes& form) const;
    Query BuildJoin(const Node& node, const Nodes& form) const;
    Query BuildText(const Node& node, const Nodes& form) const;
    Query BuildIndexTable(const Node& node, const Nodes& form) const;
    Query BuildIndexJoin(const Node& node, const Nodes& form) const;
    Query BuildExchange(const Node& node, const Nodes& form) const;
    Query BuildAppend(const Node& node, const Nodes& form) const;
    Query RefuseForm(const Node& node, const Nodes& form) const;

    void CheckCount(const Node& node, const Nodes& form, size_t min, size_t max, const wchar_t* message) const {
        if (form.size() - 1 < min || form.size() - 1 > max) m_reader.Raise(message, node);
    }
    RefCntPtr<VQLExpression> BuildExpression(const Node& node, const usrprops& literalProperties = {}) const {
        return VQLExpressionParser()(node, m_dictionary, literalProperties);
    }
    usrprops BuildProperties(const Node& node) const {
        return ParseVQLPropertyList(node, status::VQLQueryParser_Raise);
    }
    VQLBinding BuildBinding(const Node& node) const;
    VQLColumnMap BuildColumnMap(const Node& node) const;
    /// The database path and column map that a table or domain form may end with.
    std::pair<std::wstring, VQLColumnMap> BuildPathAndMap(const Nodes& form) const;
    VQLPivotQuery::Group BuildPivotGroup(const Node& node) const;
    VQLOrderQuery::Orders BuildOrders(const Node& node) const;
    VQLJoinQuery::Conditions BuildConditions(const Node& node) const;
    VQLAppendQuery::Renames BuildRenames(const Node& node) const;

    SymbolDictionary& m_dictionary;
    const VQLNodeReader m_reader{status::VQLQueryParser_Raise};
};

const std::unordered_map<std::wstring, Builder::Form>& Builder::Forms() {
    static const std::unordered_map<std::wstring, Form> forms = {
        {VQLSymbols::symTable, &Builder::BuildTable},
        {VQLSymbols::symDomain, &Builder::BuildDomain},
        {VQLSymbols::symSelect, &Builder::BuildSelect},
        {VQLSymbols::symProject, &Builder::BuildProject},
        {VQLSymbols::symRestrict, &Builder::BuildRestrict},
        {VQLSymbols::symPivot, &Builder::BuildPivot},
        {VQLSymbols::symAggregate, &Builder::BuildAggregate},
        {VQLSymbols::symOrder, &Builder::BuildOrder},
        {VQLSymbols::symTop, &Builder::BuildTop},
        {VQLSymbols::symJoin, &Builder::BuildJoin},
        {VQLSymbols::symLeftJoin, &Builder::BuildJoin},
        {VQLSymbols::symRightJoin, &Builder::BuildJoin},
        {VQLSymbols::symFullJoin, &Builder::BuildJoin},
        {VQLSymbols::symText, &Builder::BuildText},
        {VQLSymbols::symTransform, &Builder::RefuseForm},
        {VQLSymbols::symIndexTable, &Builder::BuildIndexTable},
        {VQLSymbols::symIndexJoin, &Builder::BuildIndexJoin},
        {VQLSymbols::symExchange, &Builder::BuildExchange},
        {VQLSymbols::symAppend, &Builder::BuildAppend},
        {VQLSymbols::symRemoteQuery, &Builder::RefuseForm},
    };
    return forms;
}

Query Builder::BuildQuery(const Node& node) const {
    const Nodes& form = m_reader.Form(node);
    const std::wstring& word = VQLNodeReader::Head(form);
    const auto found = Forms().find(word);
    if (found == Forms().end()) m_reader.Raise(L"unknown operator (" + word + L")", form[0]);
    return (this->*found->second)(node, form);
}

Query Builder::RefuseForm(const Node& node, const Nodes& form) const {
    m_reader.Raise(L"operator not supported (" + VQLNodeReader::Head(form) + L")", node);
}

VQLColumnMap Builder::BuildColumnMap(const Node& node) const {
    VQLColumnMap columnMap;
    for (const Node& entry : m_reader.List(node)) {
        const auto* pair = dynamic_cast<const VQLListNode*>(entry.get());
        // An element that is no list is passed over, and always was.
        if (!pair) continue;
        if (pair->GetNodes().size() != 2) m_reader.Raise(L"wrong number of arguments to column mapping", entry);
        columnMap.Insert(m_reader.Identifier(pair->GetNodes()[0]), m_reader.Identifier(pair->GetNodes()[1]));
    }
    return columnMap;
}

std::pair<std::wstring, VQLColumnMap> Builder::BuildPathAndMap(const Nodes& form) const {
    const auto path = [&](const Node& node) { return m_reader.String(node, L"database path is not a string"); };
    if (form.size() == 4) return {path(form[2]), BuildColumnMap(form[3])};
    if (form.size() < 3) return {};
    if (dynamic_cast<const VQLLiteralNode*>(form[2].get())) return {path(form[2]), {}};
    return {std::wstring(), BuildColumnMap(form[2])};
}

Query Builder::BuildTable(const Node& node, const Nodes& form) const {
    CheckCount(node, form, 1, 3, L"wrong number of arguments to table");
    const VQLIdentifier& name = m_reader.Identifier(form[1]);
    auto [path, columnMap] = BuildPathAndMap(form);
    return MakeRef<VQLTableQuery>(node->GetPosition(), name, std::move(path), std::move(columnMap));
}

Query Builder::BuildDomain(const Node& node, const Nodes& form) const {
    CheckCount(node, form, 1, 3, L"wrong number of arguments to domain");
    const VQLIdentifier& name = m_reader.Identifier(form[1]);
    if (name.GetComponents().size() < 2) m_reader.Raise(L"domain argument should be [table].[column]", form[1]);
    auto [path, columnMap] = BuildPathAndMap(form);
    return MakeRef<VQLDomainQuery>(node->GetPosition(), name, std::move(path), std::move(columnMap));
}

Query Builder::BuildSelect(const Node& node, const Nodes& form) const {
    CheckCount(node, form, 2, 2, L"wrong number of arguments to select");
    Query input = BuildQuery(form[1]);
    return MakeRef<VQLSelectQuery>(node->GetPosition(), std::move(input), BuildExpression(form[2]));
}

Query Builder::BuildProject(const Node& node, const Nodes& form) const {
    CheckCount(node, form, 2, 2, L"wrong number of arguments to project");
    Query input = BuildQuery(form[1]);
    return MakeRef<VQLProjectQuery>(node->GetPosition(), std::move(input), BuildBindings(form[2]));
}

Query Builder::BuildRestrict(const Node& node, const Nodes& form) const {
    CheckCount(node, form, 2, 2, L"wrong number of arguments to restrict");
    Query input = BuildQuery(form[1]);
    std::vector<VQLIdentifier> identifiers;
    for (const Node& identifier : m_reader.List(form[2])) identifiers.push_back(m_reader.Identifier(identifier));
    return MakeRef<VQLRestrictQuery>(node->GetPosition(), std::move(input), std::move(identifiers));
}

VQLPivotQuery::Group Builder::BuildPivotGroup(const Node& node) const {
    const Nodes& pair = m_reader.List(node, 2, L"wrong number of arguments to pivot group");
    VQLPivotQuery::Group group{m_reader.Identifier(pair[0]), {}};
    for (const Node& member : m_reader.List(pair[1])) group.second.push_back(m_reader.Identifier(member));
    if (group.second.empty()) m_reader.Raise(L"pivot group is empty", pair[1]);
    return group;
}

Query Builder::BuildPivot(const Node& node, const Nodes& form) const {
    CheckCount(node, form, 3, 4, L"wrong number of arguments to pivot");
    Query input = BuildQuery(form[1]);
    VQLPivotQuery::Group tags = BuildPivotGroup(form[2]);
    std::vector<VQLPivotQuery::Group> groups;
    for (const Node& group : m_reader.List(form[3])) {
        groups.push_back(BuildPivotGroup(group));
        if (groups.back().second.size() != tags.second.size())
            m_reader.Raise(L"pivot group has the wrong number of members", group);
    }
    usrprops properties;
    if (form.size() > 4) properties = BuildProperties(form[4]);
    return MakeRef<VQLPivotQuery>(node->GetPosition(), std::move(input), std::move(tags), std::move(groups),
                                  std::wstring(properties.text(usrpropkey::collation)));
}

Query Builder::BuildAggregate(const Node& node, const Nodes& form) const {
    CheckCount(node, form, 3, 3, L"wrong number of arguments to aggregate");
    Query input = BuildQuery(form[1]);
    VQLBindings groupBys = BuildBindings(form[2]);
    return MakeRef<VQLAggregateQuery>(node->GetPosition(), std::move(input), std::move(groupBys),
                                      BuildBindings(form[3]));
}

VQLOrderQuery::Orders Builder::BuildOrders(const Node& node) const {
    VQLOrderQuery::Orders orders;
    for (const Node& entry : m_reader.List(node)) {
        const Nodes& members = m_reader.List(entry);
        if (members.size() != 2 && members.size() != 3) m_reader.Raise(L"wrong number of arguments for order", entry);
        VQLOrderQuery::Order order;
        order.expression = BuildExpression(members[0]);
        constexpr const wchar_t* message = L"expected 'asc' or 'desc'";
        const std::wstring& sense = m_reader.Symbol(members[1], message);
        if (sense == VQLSymbols::symDesc)
            order.sense = VQLSortSense::descending;
        else if (sense != VQLSymbols::symAsc)
            m_reader.Raise(message, members[1]);
        if (members.size() == 3) order.output = m_reader.Identifier(members[2]);
        orders.push_back(std::move(order));
    }
    return orders;
}

Query Builder::BuildOrder(const Node& node, const Nodes& form) const {
    CheckCount(node, form, 2, 2, L"wrong number of arguments to order");
    Query input = BuildQuery(form[1]);
    return MakeRef<VQLOrderQuery>(node->GetPosition(), std::move(input), BuildOrders(form[2]));
}

Query Builder::BuildTop(const Node& node, const Nodes& form) const {
    CheckCount(node, form, 3, 3, L"wrong number of arguments to top");
    Query input = BuildQuery(form[1]);
    VQLOrderQuery::Orders orders = BuildOrders(form[2]);
    const long long count = m_reader.Integer(form[3], std::numeric_limits<int>::min(), std::numeric_limits<int>::max());
    return MakeRef<VQLTopQuery>(node->GetPosition(), std::move(input), std::move(orders), static_cast<int>(count));
}

VQLJoinQuery::Conditions Builder::BuildConditions(const Node& node) const {
    VQLJoinQuery::Conditions conditions;
    for (const Node& entry : m_reader.List(node)) {
        const Nodes& pair = m_reader.List(entry, 2, L"wrong number of arguments to join condition");
        RefCntPtr<VQLExpression> left = BuildExpression(pair[0]);
        conditions.emplace_back(std::move(left), BuildExpression(pair[1]));
    }
    return conditions;
}

Query Builder::BuildJoin(const Node& node, const Nodes& form) const {
    CheckCount(node, form, 4, 5, L"wrong number of arguments to join");
    const std::wstring& word = VQLNodeReader::Head(form);
    const VQLJoinType type = word == VQLSymbols::symJoin        ? VQLJoinType::inner
                             : word == VQLSymbols::symLeftJoin  ? VQLJoinType::left
                             : word == VQLSymbols::symRightJoin ? VQLJoinType::right
                                                                : VQLJoinType::full;
    Query left = BuildQuery(form[1]);
    Query right = BuildQuery(form[2]);
    VQLJoinQuery::Conditions conditions = BuildConditions(form[3]);
    VQLBindings imports = BuildBindings(form[4]);
    const bool hasFlag = form.size() > 5;
    bool isLookup = false;
    if (hasFlag) {
        const std::wstring& flag = m_reader.Symbol(form[5]);
        isLookup = flag == VQLSymbols::symIsLookup;
        if (!isLookup && flag != VQLSymbols::symIND) m_reader.Raise(L"wrong join flag", form[5]);
    }
    return MakeRef<VQLJoinQuery>(node->GetPosition(), std::move(left), std::move(right), std::move(conditions),
                                 std::move(imports), type, !hasFlag, isLookup);
}

Query Builder::BuildText(const Node& node, const Nodes& form) const {
    CheckCount(node, form, 1, 3, L"wrong number of arguments to text");
    const std::wstring& path = m_reader.String(form[1], L"path argument of text is not a string");
    std::vector<usrprops> schema;
    if (form.size() > 2)
        for (const Node& column : m_reader.List(form[2], L"schema argument of text is not a list"))
            schema.push_back(BuildProperties(column));
    usrprops textProperties;
    if (form.size() > 3) {
        m_reader.List(form[3], L"text properties argument of text is not a list");
        textProperties = BuildProperties(form[3]);
    }
    return MakeRef<VQLTextQuery>(node->GetPosition(), path, std::move(schema), std::move(textProperties));
}

Query Builder::BuildIndexTable(const Node& node, const Nodes& form) const {
    CheckCount(node, form, 2, 2, L"wrong number of arguments to table");
    const VQLIdentifier& name = m_reader.Identifier(form[1]);
    return MakeRef<VQLIndexTableQuery>(node->GetPosition(), name, std::wstring(), m_reader.Identifier(form[2]),
                                       m_dictionary);
}

Query Builder::BuildIndexJoin(const Node& node, const Nodes& form) const {
    CheckCount(node, form, 5, 5, L"wrong number of arguments to join");
    Query left = BuildQuery(form[1]);
    Query right = BuildQuery(form[2]);
    VQLBindings imports = BuildBindings(form[3]);
    const VQLIdentifier& start = m_reader.Identifier(form[4]);
    return MakeRef<VQLIndexJoinQuery>(node->GetPosition(), std::move(left), std::move(right), std::move(imports), start,
                                      m_reader.Identifier(form[5]));
}

Query Builder::BuildExchange(const Node& node, const Nodes& form) const {
    CheckCount(node, form, 2, 2, L"wrong number of arguments to exchange");
    Query input = BuildQuery(form[1]);
    const long long count = m_reader.Integer(form[2], 0, std::numeric_limits<int>::max());
    return MakeRef<VQLExchangeQuery>(node->GetPosition(), std::move(input), static_cast<unsigned>(count));
}

VQLAppendQuery::Renames Builder::BuildRenames(const Node& node) const {
    VQLAppendQuery::Renames renames;
    for (const Node& entry : m_reader.List(node)) {
        const Nodes& pair = m_reader.List(entry, 2, L"wrong number of arguments in a rename -- should be 2");
        const VQLIdentifier& from = m_reader.Identifier(pair[0]);
        renames.emplace_back(from, m_reader.Identifier(pair[1]));
    }
    return renames;
}

Query Builder::BuildAppend(const Node& node, const Nodes& form) const {
    const size_t count = form.size() - 1;
    if (count % 2 == 0 || count < 3) m_reader.Raise(L"wrong number of arguments to append", node);
    Query left = BuildQuery(form[1]);
    std::vector<Query> rightList;
    std::vector<VQLAppendQuery::Renames> renamesList;
    for (size_t i = 2; i < form.size(); i += 2) {
        rightList.push_back(BuildQuery(form[i]));
        renamesList.push_back(BuildRenames(form[i + 1]));
    }
    return MakeRef<VQLAppendQuery>(node->GetPosition(), std::move(left), std::move(rightList), std::move(renamesList));
}

VQLBinding Builder::BuildBinding(const Node& node) const {
    const auto* list = dynamic_cast<const VQLListNode*>(node.get());
    if (!list) {
        const VQLIdentifier& name = m_reader.Identifier(node);
        return {name, MakeRef<VQLIdentifierExpression>(node->GetPosition(), name)};
    }
    const Nodes& members = list->GetNodes();
    if (members.size() != 2 && members.size() != 3) m_reader.Raise(L"wrong number of arguments to binding", node);
    const VQLIdentifier& name = m_reader.Identifier(members[0]);
    if (members.size() == 2) return {name, BuildExpression(members[1])};

    const usrprops properties = BuildProperties(members[2]);
    if (properties.size() != 1 || !properties.has(usrpropkey::collation))
        m_reader.Raise(L"only the collation property is allowed in the property list", members[2]);
    const auto* literal = dynamic_cast<const VQLLiteralNode*>(members[1].get());
    if (!literal || literal->GetLiteral().GetType() != VQLDataType::string)
        m_reader.Raise(L"the collation property can be set only to string literals", members[1]);
    return {name, BuildExpression(members[1], properties)};
}

VQLBindings Builder::BuildBindings(const Node& node) const {
    VQLBindings bindings;
    for (const Node& binding : m_reader.List(node)) bindings.push_back(BuildBinding(binding));
    return bindings;
}

[[noreturn]] void NotSingle(Node root) {
    throw VQLParseException(status::VQLQueryParser_Single, L"expected single query", root->GetPosition());
}

}  // namespace

RefCntPtr<VQLQuery> VQLQueryParser::operator()(const wchar_t* text) const {
    return (*this)(VQLParser::ParseAndReturnFirstNode(m_dictionary, text, false, NotSingle));
}

RefCntPtr<VQLQuery> VQLQueryParser::operator()(const RefCntPtr<VQLNode>& node) const {
    Metrics::Scope scope("VQLQueryParser");
    return Builder(m_dictionary).BuildQuery(node);
}

VQLBindings VQLQueryParser::ParseBindings(const RefCntPtr<VQLNode>& node) const {
    return Builder(m_dictionary).BuildBindings(node);
}

}  // namespace qve
