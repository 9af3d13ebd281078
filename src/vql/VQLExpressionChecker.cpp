#include "vql/VQLExpressionChecker.h"

#include <algorithm>
#include <set>

#include "vql/VQLExpressions.h"
#include "vql/status.h"

namespace qve {

namespace {

VQLFunctionTable::Types DataTypes(const VQLExpressions& expressions) {
    VQLFunctionTable::Types types;
    types.reserve(expressions.size());
    for (const RefCntPtr<VQLExpression>& expression : expressions) types.push_back(expression->GetDataType());
    return types;
}

/// Gives an expression of unknown type the type that its surroundings ask for, and what follows from it further down.
class TypePusher : private VQLExpressionVisitor {
public:
    explicit TypePusher(const VQLFunctionTable& functions) : m_functions(functions) {}

    void Push(VQLDataType type, VQLExpression& expression) {
        if (expression.GetDataType() != VQLDataType::unknown || type == VQLDataType::unknown) return;
        m_type = type;
        expression.Accept(*this);
    }

    void PushArguments(const VQLFunction& function, const VQLFuncallExpression& call) {
        for (size_t i = 0; i < call.GetArguments().size(); ++i)
            Push(function.GetArguments()[i], *call.GetArguments()[i]);
    }

private:
    void VisitLiteral(VQLLiteralExpression& expression) override { expression.SetDataType(m_type); }
    void VisitIdentifier(VQLIdentifierExpression&) override {}

    void VisitFuncall(VQLFuncallExpression& expression) override {
        const VQLDataType type = m_type;
        std::vector<const VQLFunction*> matches =
            m_functions.ResolveMatches(expression.GetName(), DataTypes(expression.GetArguments()));
        std::erase_if(matches, [&](const VQLFunction* match) { return match->GetReturnType() != type; });
        if (matches.empty()) return;
        expression.SetDataType(type);
        if (matches.size() == 1) PushArguments(*matches[0], expression);
    }

    void VisitCase(VQLCaseExpression& expression) override {
        const VQLDataType type = m_type;
        expression.SetDataType(type);
        for (const RefCntPtr<VQLExpression>& then : expression.GetThens()) Push(type, *then);
    }

    const VQLFunctionTable& m_functions;
    VQLDataType m_type = VQLDataType::unknown;
};

/// The collation that the value of an expression has from its columns and literals: the first there is.
usrprops InheritedCollation(const VQLExpressions& expressions) {
    for (const RefCntPtr<VQLExpression>& expression : expressions) {
        const usrprops& properties = expression->GetPrimitiveProperties();
        if (expression->GetDataType() == VQLDataType::string && properties.has(usrpropkey::collation))
            return {{usrpropkey::collation, *properties.get(usrpropkey::collation)}};
    }
    return {};
}

void SetCollation(VQLExpression& expression, const usrprops& properties) {
    usrprops collation;
    if (const std::wstring* name = properties.get(usrpropkey::collation))
        if (expression.GetDataType() == VQLDataType::string) collation.set(usrpropkey::collation, *name);
    expression.SetPrimitiveProperties(std::move(collation));
}

}  // namespace

void VQLExpressionChecker::Raise(std::wstring message, const VQLExpression& expression) {
    throw VQLParseException(status::VQLExpressionChecker_Raise, std::move(message), expression.GetPosition());
}

void VQLExpressionChecker::Visit(const RefCntPtr<VQLExpression>& expression) {
    expression->Accept(*this);
}

void VQLExpressionChecker::VisitLiteral(VQLLiteralExpression& expression) {
    expression.SetDomainName({});
    expression.SetDataType(expression.GetLiteral().GetType());
    expression.SetExpressionType(VQLExpressionType::const_);
    SetCollation(expression, expression.GetUsrProps());
}

void VQLExpressionChecker::VisitIdentifier(VQLIdentifierExpression& expression) {
    const VQLIdentifier& name = expression.GetIdentifier();
    const VQLColumn* column = m_input.FindColumn(name);
    if (!column) Raise(L"no such column " + name.AsString(), expression);
    expression.SetDataType(column->GetDataType());
    expression.SetExpressionType(VQLExpressionType::scalar);
    const std::wstring* source = column->GetProperties().get(usrpropkey::dictionary_column_name);
    expression.SetDomainName(source ? VQLIdentifier::Quoted(*source, m_dictionary) : name);
    SetCollation(expression, column->GetProperties());
}

VQLExpressionType VQLExpressionChecker::FoldExpressionTypes(const VQLExpressions& arguments) const {
    VQLExpressionType folded = VQLExpressionType::const_;
    for (const RefCntPtr<VQLExpression>& argument : arguments) {
        const VQLExpressionType type = argument->GetExpressionType();
        if (type == VQLExpressionType::const_) continue;
        if (folded != VQLExpressionType::const_ && folded != type)
            Raise(L"cannot mix aggregate and scalar expressions", *argument);
        folded = type;
    }
    return folded;
}

void VQLExpressionChecker::VisitFuncall(VQLFuncallExpression& expression) {
    const VQLExpressions& arguments = expression.GetArguments();
    for (const RefCntPtr<VQLExpression>& argument : arguments) Visit(argument);
    const VQLExpressionType folded = FoldExpressionTypes(arguments);

    const VQLFunctionTable::Types types = DataTypes(arguments);
    std::vector<const VQLFunction*> matches = m_functions.ResolveMatches(expression.GetName(), types);
    const auto differs = [&](const VQLFunction* match) {
        return match->GetPrimitiveOp() != matches[0]->GetPrimitiveOp() ||
               match->IsAggregate() != matches[0]->IsAggregate();
    };
    // Several signatures of one operation will do: which of them it is shows when the nulls have their types.
    if (matches.empty() || std::any_of(matches.begin(), matches.end(), differs))
        matches = {&m_functions.Resolve(expression.GetName(), types)};
    const VQLFunction& function = *matches[0];

    expression.SetPrimitiveOp(function.GetPrimitiveOp());
    if (function.IsAggregate() && folded == VQLExpressionType::aggregate)
        Raise(L"aggregate functions require scalar arguments", expression);
    expression.SetExpressionType(function.IsAggregate() ? VQLExpressionType::aggregate : folded);

    const bool oneReturnType = std::all_of(matches.begin(), matches.end(), [&](const VQLFunction* match) {
        return match->GetReturnType() == function.GetReturnType();
    });
    expression.SetDataType(oneReturnType ? function.GetReturnType() : VQLDataType::unknown);

    std::set<VQLIdentifier> domains;
    for (size_t i = 0; i < arguments.size(); ++i)
        if (function.IsDomainArgument(i) && !arguments[i]->GetDomainName().empty())
            domains.insert(arguments[i]->GetDomainName());
    expression.SetDomainName(domains.size() == 1 ? *domains.begin() : VQLIdentifier());

    if (matches.size() == 1) TypePusher(m_functions).PushArguments(function, expression);
    SetCollation(expression, InheritedCollation(arguments));
}

void VQLExpressionChecker::VisitCase(VQLCaseExpression& expression) {
    for (const RefCntPtr<VQLExpression>& argument : expression.GetArguments()) Visit(argument);
    expression.SetExpressionType(FoldExpressionTypes(expression.GetArguments()));

    TypePusher pusher(m_functions);
    for (const RefCntPtr<VQLExpression>& predicate : expression.GetPredicates()) {
        pusher.Push(VQLDataType::boolean, *predicate);
        if (predicate->GetDataType() != VQLDataType::boolean) Raise(L"case predicate is not boolean", *predicate);
    }

    const VQLExpressions& thens = expression.GetThens();
    const VQLDataType type = VQLFunctionTable::ResolveCaseType(DataTypes(thens), VQLDataType::unknown);
    expression.SetDataType(type);
    for (const RefCntPtr<VQLExpression>& then : thens) pusher.Push(type, *then);

    const VQLIdentifier& domain = thens[0]->GetDomainName();
    const bool sharedDomain = std::all_of(thens.begin(), thens.end(), [&](const RefCntPtr<VQLExpression>& then) {
        return then->GetDomainName() == domain;
    });
    expression.SetDomainName(sharedDomain ? domain : VQLIdentifier());
    SetCollation(expression, InheritedCollation(thens));
}

}  // namespace qve
