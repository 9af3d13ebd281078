#include "algebra/plan/ExpBuilder.h"

#include <set>

#include "algebra/BooleanExp.h"
#include "algebra/CaseExp.h"
#include "algebra/CastExp.h"
#include "algebra/ColumnExp.h"
#include "algebra/CompressExp.h"
#include "algebra/ConstantExp.h"
#include "algebra/CountdExp.h"
#include "algebra/DataExp.h"
#include "algebra/ExpandExp.h"
#include "algebra/HashExp.h"
#include "algebra/LiteralAtom.h"
#include "algebra/LookupExp.h"
#include "algebra/MakeCall.h"
#include "algebra/MomentsExp.h"
#include "algebra/Namespace.h"
#include "algebra/PartitionExp.h"
#include "algebra/QuantileExp.h"
#include "algebra/Table.h"
#include "algebra/plan/status.h"
#include "primitives/primitive.h"
#include "primitives/primitive_directory.h"
#include "storage/Column.h"
#include "system/VQLException.h"
#include "types/complete_type.h"
#include "types/usratom.h"
#include "types/usrtype.h"
#include "vql/syntax/VQLPropertyListParser.h"

namespace qve {
namespace {

const std::wstring anonymous;

// The operations that there are, each with its family.
bool IsOperation(const wchar_t* klass, const std::wstring& op) {
    static const auto operations = [] {
        std::set<std::pair<std::wstring, std::wstring>> all;
        for (const primitive* kernel : primitive::directory().all()) all.emplace(kernel->klass(), kernel->operation());
        return all;
    }();
    return operations.contains({klass, op});
}

}  // namespace

ExpBuilder::ExpBuilder(ContextType context, const Namespace& input)
    : m_reader(status::ExpBuilder_Raise), m_input(input), m_context(context) {}

void ExpBuilder::Raise(const wchar_t* text) const {
    m_reader.Raise(text, m_node);
}

RefCntPtr<Exp> ExpBuilder::Build(ContextType context, const RefCntPtr<VQLNode>& node) {
    const ContextType outerContext = std::exchange(m_context, context);
    const RefCntPtr<VQLNode> outerNode = std::exchange(m_node, node);
    node->Accept(*this);
    m_context = outerContext;
    m_node = outerNode;
    return std::move(m_result);
}

Exp::Arguments ExpBuilder::BuildArguments(ContextType context, const Nodes& form) {
    Exp::Arguments arguments;
    for (size_t i = 1; i < form.size(); ++i) arguments.push_back(Build(context, form[i]));
    return arguments;
}

void ExpBuilder::VisitSymbol(VQLSymbolNode&) {
    Raise(L"unknown function");
}

void ExpBuilder::VisitLiteral(VQLLiteralNode& node) {
    const usratom atom = AtomOfLiteral(node.GetLiteral(), {});
    if (!atom.type()) Raise(L"unsupported literal type");
    m_result = MakeRef<ConstantExp>(atom);
}

void ExpBuilder::VisitIdentifier(VQLIdentifierNode& node) {
    const auto& components = node.GetIdentifier().GetComponents();
    if (components.size() != 1) Raise(L"composite identifier in expression");
    m_result = MakeRef<ColumnExp>(m_input.DescribeColumn(components.front().AsString()));
}

void ExpBuilder::VisitList(VQLListNode& node) {
    const Nodes& form = node.GetNodes();
    if (form.empty()) Raise(L"empty function call");
    if (dynamic_cast<const VQLLiteralNode*>(form[0].get())) {
        m_result = MakeRef<ConstantExp>(QualifiedLiteral(form));
        return;
    }
    const auto* symbol = dynamic_cast<const VQLSymbolNode*>(form[0].get());
    if (!symbol) Raise(L"missing function name");
    RefCntPtr<Exp> exp = BuildForm(symbol->GetSymbol(), form);
    m_result = exp ? std::move(exp) : BuildCall(symbol->GetSymbol(), form);
}

RefCntPtr<Exp> ExpBuilder::BuildForm(const std::wstring& word, const Nodes& form) {
    const size_t arguments = form.size() - 1;
    if (word == L"null") return MakeRef<ConstantExp>(Null(form));
    if (word == L"values") return BuildValues(form);
    if (word == CaseExp::opCase) {
        if (arguments < 2) Raise(L"wrong number of arguments to case");
        return MakeRef<CaseExp>(anonymous, BuildArguments(ContextType::map, form));
    }
    if (word == L"data") {
        if (arguments != 1) Raise(L"wrong number of arguments to data");
        return MakeRef<DataExp>(Build(ContextType::map, form[1]));
    }
    if (word == CastExp::opCast) {
        if (arguments != 2) Raise(L"wrong number of arguments to cast");
        RefCntPtr<Exp> value = Build(ContextType::map, form[1]);
        return MakeRef<CastExp>(anonymous, std::move(value), Build(ContextType::map, form[2]));
    }
    if (word == BooleanExp::opAnd || word == BooleanExp::opOr) {
        if (arguments < 2) Raise(L"missing argument");
        const bool selects = m_context == ContextType::select;
        return MakeRef<BooleanExp>(anonymous, word,
                                   BuildArguments(selects ? ContextType::select : ContextType::map, form));
    }
    if (word == L"compress" || word == L"expand") {
        if (arguments != 1) Raise(L"missing argument");
        RefCntPtr<Exp> value = Build(ContextType::map, form[1]);
        if (word == L"compress") return MakeRef<CompressExp>(anonymous, std::move(value));
        return MakeRef<ExpandExp>(anonymous, std::move(value));
    }
    if (word == L"partition") {
        if (arguments < 1) Raise(L"missing argument");
        return MakeRef<PartitionExp>(anonymous, BuildArguments(ContextType::map, form));
    }
    if (word == L"hashes") return BuildHashes(form);
    if (word == L"lookup") return BuildLookup(form);
    if (word == L"map" && m_context == ContextType::select) {
        if (arguments != 1) Raise(L"missing argument");
        return Build(ContextType::map, form[1]);
    }
    return nullptr;
}

RefCntPtr<Exp> ExpBuilder::BuildCall(const std::wstring& op, const Nodes& form) {
    const ContextType context = m_context;
    const wchar_t* klass = context == ContextType::aggregate ? primitive::klassAggregate
                           : context == ContextType::select  ? primitive::klassSelect
                                                             : primitive::klassMap;
    const bool quantile = context == ContextType::aggregate && op == QuantileExp::opQuantile;
    const bool countd = context == ContextType::aggregate && op == CountdExp::opCountd;
    const MomentsExp::Statistic* statistic = context == ContextType::aggregate ? MomentsExp::Find(op) : nullptr;
    if (!quantile && !countd && !statistic && !IsOperation(klass, op))
        m_reader.Raise(L"unknown function (" + op + L")", m_node);
    const Exp::Arguments arguments = BuildArguments(ContextType::map, form);
    if (quantile) {
        if (arguments.size() != 2) Raise(L"missing argument");
        return MakeRef<QuantileExp>(anonymous, arguments[0], arguments[1]);
    }
    if (statistic) {
        if (arguments.size() != MomentsExp::CountArguments(*statistic)) Raise(L"missing argument");
        return MakeRef<MomentsExp>(anonymous, op, *statistic, arguments);
    }
    if (countd) {
        if (arguments.size() != 1) Raise(L"missing argument");
        return MakeRef<CountdExp>(anonymous, arguments[0]);
    }
    RefCntPtr<Exp> call = context == ContextType::aggregate ? MakeAggregateCall(op, arguments)
                          : context == ContextType::select  ? MakeSelectCall(op, arguments)
                                                            : MakeMapCall(op, arguments);
    if (!call) Raise(L"missing argument");
    return call;
}

usratom ExpBuilder::QualifiedLiteral(const Nodes& form) const {
    if (form.size() != 2) Raise(L"unsupported literal type");
    const usrprops properties = complete_type(ParseVQLPropertyList(form[1], status::ExpBuilder_Raise));
    const usratom plain = AtomOfLiteral(m_reader.Literal(form[0]), properties);
    if (!plain.type()) Raise(L"unsupported literal type");
    return CastConstant(*MakeRef<ConstantExp>(plain), properties)->GetValue();
}

usratom ExpBuilder::Null(const Nodes& form) const {
    if (form.size() != 2) Raise(L"invalid null");
    const usrtype* type = usrtype::resolve(complete_type(ParseVQLPropertyList(form[1], status::ExpBuilder_Raise)));
    if (!type) Raise(L"invalid null type");
    return type->null();
}

RefCntPtr<Exp> ExpBuilder::BuildValues(const Nodes& form) {
    if (form.size() < 2) Raise(L"missing argument");
    const Exp::Arguments constants = BuildArguments(ContextType::map, form);
    RefCntPtr<ConstantExp> values;
    for (const RefCntPtr<Exp>& constant : constants) {
        const auto* value = dynamic_cast<const ConstantExp*>(constant.get());
        if (!value) Raise(L"expected literal");
        if (values) {
            values->AddValue(value->GetValue());
        } else {
            values = MakeRef<ConstantExp>(value->GetValue());
        }
    }
    return values;
}

RefCntPtr<Exp> ExpBuilder::BuildHashes(const Nodes& form) {
    RefCntPtr<HashExp> chain;
    for (size_t i = 1; i < form.size(); ++i) {
        const Nodes& link = m_reader.List(form[i]);
        if (link.size() != 3) Raise(L"missing argument");
        const std::wstring& op = m_reader.Symbol(link[0]);
        if (op != (chain ? L"rehash" : L"hash") && op != (chain ? L"radixgrp" : L"radixhash")) {
            m_reader.Raise(L"unknown function (" + op + L")", link[0]);
        }
        const bool tokens = m_reader.Symbol(link[1]) == L"tokens";
        if (!tokens && m_reader.Symbol(link[1]) != L"values") m_reader.Raise(L"expected tokens or values", link[1]);
        chain = MakeRef<HashExp>(anonymous, op, Build(ContextType::map, link[2]), tokens, chain);
    }
    if (!chain) Raise(L"missing argument");
    return chain;
}

usratom ExpBuilder::BuildConstant(const RefCntPtr<VQLNode>& node) {
    const RefCntPtr<Exp> exp = Build(ContextType::map, node);
    const auto* constant = dynamic_cast<const ConstantExp*>(exp.get());
    if (!constant || constant->GetValueCount() != 1) m_reader.Raise(L"expected literal", node);
    return constant->GetValue();
}

RefCntPtr<Exp> ExpBuilder::BuildLookup(const Nodes& form) {
    if (form.size() < 5) Raise(L"lookup takes at least 4 arguments");
    Exp::Arguments keys;
    for (const RefCntPtr<VQLNode>& key : m_reader.List(form[1])) keys.push_back(Build(ContextType::map, key));
    if (keys.empty()) Raise(L"VisitLookup: missing input");
    std::vector<const usrtype*> types;
    for (const RefCntPtr<VQLNode>& type : m_reader.List(form[2])) types.push_back(BuildConstant(type).type());
    if (types.size() != keys.size()) Raise(L"VisitLookup: table not rectangular");
    usratom otherwise = BuildConstant(form[3]);
    LookupTable table(types, otherwise.type());
    types.push_back(otherwise.type());
    for (size_t i = 4; i < form.size(); ++i) {
        const Nodes& row = m_reader.List(form[i]);
        if (row.size() != types.size()) m_reader.Raise(L"VisitLookup: table not rectangular", form[i]);
        std::vector<usratom> cells;
        for (size_t c = 0; c < row.size(); ++c) {
            usratom cell = BuildConstant(row[c]);
            if (cell.type() != types[c]) {
                cell = CastConstant(*MakeRef<ConstantExp>(cell), types[c]->properties())->GetValue();
            }
            cells.push_back(std::move(cell));
        }
        table.Add(cells);
    }
    return MakeRef<LookupExp>(anonymous, std::move(keys), table.Finish(), std::move(otherwise));
}

}  // namespace qve
