#include "vql/syntax/VQLParser.h"

#include "system/QuillonException.h"
#include "vql/syntax/VQLLexer.h"
#include "vql/syntax/status.h"

namespace qve {

RefCntPtr<VQLListNode> VQLParser::operator()(const std::vector<VQLToken>& tokens) {
    const auto root = MakeRef<VQLListNode>(VQLPosition());
    m_stack.assign(1, root);
    for (const VQLToken& token : tokens) {
        const VQLPosition& position = token.GetPosition();
        VQLListNode& list = *m_stack.back();
        switch (token.GetType()) {
            case VQLTokenType::leftParenthesis: {
                if (m_stack.size() > maxDepth)
                    throw VQLParseException(status::VQLLexer_Raise, L"query too large", position);
                const auto node = MakeRef<VQLListNode>(position);
                list.AddNode(node);
                m_stack.push_back(node);
                continue;
            }
            case VQLTokenType::rightParenthesis:
                if (m_stack.size() == 1)
                    throw VQLParseException(status::VQLParser_Raise, L"unbalanced right parenthesis", position);
                m_stack.pop_back();
                continue;
            case VQLTokenType::symbol:
                list.AddNode(MakeRef<VQLSymbolNode>(position, *token.GetValue()));
                continue;
            case VQLTokenType::literal:
                list.AddNode(
                    MakeRef<VQLLiteralNode>(position, VQLLexer::ParseLiteral(token.GetValue()->c_str(), position)));
                continue;
            case VQLTokenType::identifier:
                list.AddNode(
                    MakeRef<VQLIdentifierNode>(position, VQLIdentifier::Quoted(*token.GetValue(), m_dictionary)));
                continue;
        }
        throw QVE_LogicError(status::VQLParser_TokenType, "unhandled VQLTokenType");
    }
    // Deliberately the start of the text: where the missing parenthesis belongs cannot be known.
    if (m_stack.size() > 1)
        throw VQLParseException(status::VQLParser_Raise, L"list not closed", tokens[0].GetPosition());
    return root;
}

RefCntPtr<VQLNode> VQLParser::ParseAndReturnFirstNode(SymbolDictionary& dictionary, const wchar_t* text,
                                                      bool allowEmpty, void (*notSingle)(RefCntPtr<VQLNode> root)) {
    VQLLexer lexer;
    lexer(text);
    if (allowEmpty && lexer.GetTokens().empty()) return nullptr;
    const RefCntPtr<VQLListNode> root = VQLParser(dictionary)(lexer.GetTokens());
    if (root->GetNodes().size() != 1) notSingle(root);
    return root->GetNodes().at(0);
}

}  // namespace qve
