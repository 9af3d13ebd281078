#include "vql/VQLExpressionParser.h"

#include "types/complete_type.h"
#include "types/usrtype.h"
#include "vql/VQLExpressions.h"
#include "vql/status.h"
#include "vql/syntax/VQLNodeReader.h"
#include "vql/syntax/VQLParser.h"
#include "vql/syntax/VQLPropertyListParser.h"
#include "vql/syntax/VQLSymbols.h"

namespace qve {

namespace {

class Builder : public VQLNodeVisitor {
public:
    Builder(SymbolDictionary& dictionary, const usrprops& literalProperties)
        : m_dictionary(dictionary), m_literalProperties(literalProperties) {}

    RefCntPtr<VQLExpression> Build(const RefCntPtr<VQLNode>& node) {
        m_node = node;
        node->Accept(*this);
        return std::move(m_result);
    }

private:
    void VisitLiteral(VQLLiteralNode& node) override {
        m_result = MakeRef<VQLLiteralExpression>(node.GetPosition(), node.GetLiteral(), m_literalProperties);
    }

    void VisitIdentifier(VQLIdentifierNode& node) override {
        m_result = MakeRef<VQLIdentifierExpression>(node.GetPosition(), node.GetIdentifier());
    }

    void VisitSymbol(VQLSymbolNode& node) override {
        if (node.GetSymbol() == VQLSymbols::symNull)
            m_result = MakeRef<VQLLiteralExpression>(node.GetPosition(), VQLDataValue());
        else
            m_result = MakeRef<VQLIdentifierExpression>(node.GetPosition(),
                                                        VQLIdentifier::Unquoted(node.GetSymbol(), m_dictionary));
    }

    void VisitList(VQLListNode&) override {
        const RefCntPtr<VQLNode> node = m_node;
        const VQLNodeReader::Nodes& form = m_reader.Form(node);
        const std::wstring& word = VQLNodeReader::Head(form);
        if (word == VQLSymbols::symCase || word == L"iif") {
            if (form.size() < 4 || form.size() % 2 != 0) m_reader.Raise(L"wrong number of arguments to case", node);
            m_result = MakeRef<VQLCaseExpression>(node->GetPosition(), BuildArguments(form));
        } else if (word == L"cast") {
            if (form.size() != 3) m_reader.Raise(L"wrong number of arguments to cast", node);
            usrprops properties = ParseVQLPropertyList(form[1], status::VQLExpressionParser_Raise);
            if (!properties.has(usrpropkey::factory)) properties = complete_type(properties);
            const usrtype* const type = usrtype::resolve(properties);
            VQLExpressions arguments{MakeRef<VQLLiteralExpression>(form[1]->GetPosition(), type, std::move(properties)),
                                     Build(form[2])};
            m_result = MakeRef<VQLFuncallExpression>(node->GetPosition(), word, std::move(arguments));
        } else {
            m_result = MakeRef<VQLFuncallExpression>(node->GetPosition(), word, BuildArguments(form));
        }
    }

    VQLExpressions BuildArguments(const VQLNodeReader::Nodes& form) {
        VQLExpressions arguments;
        arguments.reserve(form.size() - 1);
        for (size_t i = 1; i < form.size(); ++i) arguments.push_back(Build(form[i]));
        return arguments;
    }

    SymbolDictionary& m_dictionary;
    const usrprops& m_literalProperties;
    const VQLNodeReader m_reader{status::VQLExpressionParser_Raise};
    RefCntPtr<VQLNode> m_node;
    RefCntPtr<VQLExpression> m_result;
};

[[noreturn]] void NotSingle(RefCntPtr<VQLNode> root) {
    throw VQLParseException(status::VQLExpressionParser_Single, L"expected single expression", root->GetPosition());
}

}  // namespace

RefCntPtr<VQLExpression> VQLExpressionParser::operator()(const wchar_t* text, SymbolDictionary& dictionary,
                                                         const usrprops& literalProperties) const {
    return (*this)(VQLParser::ParseAndReturnFirstNode(dictionary, text, false, NotSingle), dictionary,
                   literalProperties);
}

RefCntPtr<VQLExpression> VQLExpressionParser::operator()(const RefCntPtr<VQLNode>& node, SymbolDictionary& dictionary,
                                                         const usrprops& literalProperties) const {
    return Builder(dictionary, literalProperties).Build(node);
}

}  // namespace qve
