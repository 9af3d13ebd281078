#include "vql/syntax/VQLNodeReader.h"

namespace qve {

void VQLNodeReader::Raise(std::wstring message, const RefCntPtr<VQLNode>& node) const {
    throw VQLParseException(m_code, std::move(message), node->GetPosition());
}

const VQLNodeReader::Nodes& VQLNodeReader::List(const RefCntPtr<VQLNode>& node, const wchar_t* message) const {
    const auto* list = dynamic_cast<const VQLListNode*>(node.get());
    if (!list) Raise(message, node);
    return list->GetNodes();
}

const VQLNodeReader::Nodes& VQLNodeReader::List(const RefCntPtr<VQLNode>& node, size_t count,
                                                const wchar_t* countMessage) const {
    const Nodes& members = List(node);
    if (members.size() != count) Raise(countMessage, node);
    return members;
}

const VQLNodeReader::Nodes& VQLNodeReader::Form(const RefCntPtr<VQLNode>& node) const {
    const Nodes& members = List(node);
    if (members.empty()) Raise(L"empty list", node);
    Symbol(members[0]);
    return members;
}

const std::wstring& VQLNodeReader::Head(const Nodes& form) {
    return static_cast<const VQLSymbolNode&>(*form[0]).GetSymbol();
}

const std::wstring& VQLNodeReader::Symbol(const RefCntPtr<VQLNode>& node, const wchar_t* message) const {
    const auto* symbol = dynamic_cast<const VQLSymbolNode*>(node.get());
    if (!symbol) Raise(message, node);
    return symbol->GetSymbol();
}

const VQLIdentifier& VQLNodeReader::Identifier(const RefCntPtr<VQLNode>& node) const {
    const auto* identifier = dynamic_cast<const VQLIdentifierNode*>(node.get());
    if (!identifier) Raise(L"expected identifier", node);
    return identifier->GetIdentifier();
}

const VQLDataValue& VQLNodeReader::Literal(const RefCntPtr<VQLNode>& node) const {
    const auto* literal = dynamic_cast<const VQLLiteralNode*>(node.get());
    if (!literal) Raise(L"expected literal", node);
    return literal->GetLiteral();
}

const std::wstring& VQLNodeReader::String(const RefCntPtr<VQLNode>& node, const wchar_t* message) const {
    const VQLDataValue& literal = Literal(node);
    if (literal.GetType() != VQLDataType::string) Raise(message, node);
    return literal.GetString();
}

long long VQLNodeReader::Integer(const RefCntPtr<VQLNode>& node, long long min, long long max) const {
    const VQLDataValue& literal = Literal(node);
    if (literal.GetType() != VQLDataType::integer || literal.GetInteger() < min || literal.GetInteger() > max)
        Raise(L"expected integer constant", node);
    return literal.GetInteger();
}

}  // namespace qve
