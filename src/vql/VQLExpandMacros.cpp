#include "vql/VQLExpandMacros.h"

#include <algorithm>
#include <string>
#include <unordered_map>
#include <vector>

#include "metrics/Scope.h"
#include "system/VQLException.h"
#include "vql/VQLExpressionCloner.h"
#include "vql/VQLExpressionParser.h"
#include "vql/VQLExpressions.h"
#include "vql/VQLQueryCloner.h"
#include "vql/status.h"

namespace qve {
namespace {

/// The number of nodes of expressions, each counted as often as it would be copied. Expansion shares an argument
/// between its uses, so a short text can stand for more nodes than there is memory; it is seen here before anything
/// copies them.
class ExpressionSize : private VQLExpressionVisitor {
public:
    static constexpr size_t limit = 100000;

    /// Above `limit` any number above it.
    size_t operator()(const RefCntPtr<VQLExpression>& expression) {
        const auto known = m_sizes.find(expression.get());
        if (known != m_sizes.end()) return known->second;
        m_size = 1;
        expression->Accept(*this);
        return m_sizes[expression.get()] = m_size;
    }

private:
    void VisitLiteral(VQLLiteralExpression&) override {}
    void VisitIdentifier(VQLIdentifierExpression&) override {}
    void VisitFuncall(VQLFuncallExpression& expression) override { Add(expression.GetArguments()); }
    void VisitCase(VQLCaseExpression& expression) override { Add(expression.GetArguments()); }
    void Add(const VQLExpressions& arguments) {
        size_t size = 1;
        for (const RefCntPtr<VQLExpression>& argument : arguments) size = std::min(size + (*this)(argument), limit + 1);
        m_size = size;
    }

    std::unordered_map<const VQLExpression*, size_t> m_sizes;
    size_t m_size = 0;
};

class VQLExpressionExpander : public VQLExpressionCloner {
public:
    VQLExpressionExpander(SymbolDictionary& dictionary, const VQLMacroMap& macros)
        : VQLExpressionCloner(dictionary), m_macros(macros) {}

    RefCntPtr<VQLExpression> VisitFuncall(const VQLFuncallExpression& call) override {
        const auto found = m_macros.find(call.GetName());
        if (found == m_macros.end()) return VQLExpressionCloner::VisitFuncall(call);
        const auto& [name, macro] = *found;
        if (call.GetArguments().size() != macro.argumentCount) {
            throw VQLParseException(status::VQLExpandMacros_Arguments,
                                    L"wrong number of arguments to macro (" + name + L")", call.GetPosition());
        }
        VQLExpressions arguments = Clone(call.GetArguments());
        const auto isThis = [&name = name](const Expansion& expansion) { return *expansion.macro == name; };
        if (std::any_of(m_stack.begin(), m_stack.end(), isThis)) {
            throw VQLException(status::VQLExpandMacros_Recursive,
                               L"recursive macro expansion detected (" + name + L")");
        }
        const RefCntPtr<VQLExpression> text = VQLExpressionParser()(macro.text.c_str(), GetDictionary(), usrprops());
        m_stack.push_back({&name, std::move(arguments)});
        RefCntPtr<VQLExpression> expanded = Clone(text);
        m_stack.pop_back();
        if (ExpressionSize()(expanded) > ExpressionSize::limit) {
            throw VQLParseException(status::VQLExpandMacros_TooLarge, L"query too large", call.GetPosition());
        }
        return expanded;
    }

    RefCntPtr<VQLExpression> VisitIdentifier(const VQLIdentifierExpression& expression) override {
        const std::wstring* parameter = m_stack.empty() ? nullptr : ParameterText(expression.GetIdentifier());
        if (!parameter) return VQLExpressionCloner::VisitIdentifier(expression);
        const VQLExpressions& arguments = m_stack.back().arguments;
        for (size_t i = 0; i < arguments.size(); ++i) {
            if (*parameter == L"%" + std::to_wstring(i + 1)) return arguments[i];
        }
        throw VQLParseException(status::VQLExpandMacros_Unresolved,
                                L"unresolved identifier in macro expansion (" + *parameter + L")",
                                expression.GetPosition());
    }

private:
    struct Expansion {
        const std::wstring* macro;
        VQLExpressions arguments;
    };

    // The text of a name that looks like a parameter, else null.
    static const std::wstring* ParameterText(const VQLIdentifier& name) {
        if (name.GetComponents().size() != 1) return nullptr;
        const std::wstring& text = name.GetComponents().front().AsString();
        return !text.empty() && text.front() == L'%' ? &text : nullptr;
    }

    const VQLMacroMap& m_macros;
    std::vector<Expansion> m_stack;
};

class VQLQueryExpander : public VQLQueryCloner {
public:
    VQLQueryExpander(SymbolDictionary& dictionary, const VQLMacroMap& macros)
        : VQLQueryCloner(dictionary), m_expand(dictionary, macros) {}
    using VQLQueryCloner::Clone;
    RefCntPtr<VQLExpression> Clone(const RefCntPtr<VQLExpression>& expression) override { return m_expand(expression); }

private:
    VQLExpressionExpander m_expand;
};

}  // namespace

RefCntPtr<VQLQuery> VQLExpandMacros(SymbolDictionary& dictionary, const VQLMacroMap& macros,
                                    const RefCntPtr<VQLQuery>& query) {
    Metrics::Scope scope("VQLExpandMacros");
    return VQLQueryExpander(dictionary, macros)(query);
}

RefCntPtr<VQLExpression> VQLExpandMacros(SymbolDictionary& dictionary, const VQLMacroMap& macros,
                                         const RefCntPtr<VQLExpression>& expression) {
    Metrics::Scope scope("VQLExpandMacros");
    return VQLExpressionExpander(dictionary, macros)(expression);
}

}  // namespace qve
