#include "algebra/plan/ParseNamespace.h"

#include "algebra/Exp.h"
#include "algebra/Namespace.h"
#include "algebra/plan/ExpBuilder.h"
#include "algebra/plan/NamespaceBuilder.h"
#include "algebra/plan/status.h"
#include "storage/Database.h"
#include "system/VQLException.h"
#include "vql/syntax/VQLParser.h"

namespace qve {
namespace {

[[noreturn]] void RaiseNotSingle(const wchar_t* message, const RefCntPtr<VQLNode>& root) {
    throw VQLParseException(status::ParseNamespace_Single, message, root->GetPosition());
}

}  // namespace

RefCntPtr<Namespace> ParseNamespace::operator()(const RefCntPtr<VQLNode>& node,
                                                const RefCntPtr<Database>& database) const {
    return NamespaceBuilder(database)(node);
}

RefCntPtr<Namespace> ParseNamespace::operator()(const wchar_t* text, const RefCntPtr<Database>& database) const {
    SymbolDictionary dictionary;
    const RefCntPtr<VQLNode> node = VQLParser::ParseAndReturnFirstNode(
        dictionary, text, false, [](RefCntPtr<VQLNode> root) { RaiseNotSingle(L"expected single query", root); });
    return (*this)(node, database);
}

RefCntPtr<Exp> ParseNamespace::operator()(ContextType context, const RefCntPtr<VQLNode>& node,
                                          const RefCntPtr<Namespace>& input) const {
    return ExpBuilder(context, *input)(node);
}

RefCntPtr<Exp> ParseNamespace::operator()(ContextType context, const wchar_t* text,
                                          const RefCntPtr<Namespace>& input) const {
    SymbolDictionary dictionary;
    const RefCntPtr<VQLNode> node = VQLParser::ParseAndReturnFirstNode(
        dictionary, text, false, [](RefCntPtr<VQLNode> root) { RaiseNotSingle(L"expected single expression", root); });
    return (*this)(context, node, input);
}

}  // namespace qve
