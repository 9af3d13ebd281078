#include "vql/syntax/VQLPropertyListParser.h"

#include "vql/syntax/VQLNodeReader.h"

namespace qve {

namespace {

/// A key or a value: a word or a string literal.
const std::wstring& Token(const VQLNodeReader& reader, const RefCntPtr<VQLNode>& node) {
    if (const auto* symbol = dynamic_cast<const VQLSymbolNode*>(node.get())) return symbol->GetSymbol();
    const auto* literal = dynamic_cast<const VQLLiteralNode*>(node.get());
    if (!literal) reader.Raise(L"Invalid property token", node);
    return reader.String(node, L"property literal is not a string");
}

}  // namespace

usrprops ParseVQLPropertyList(const RefCntPtr<VQLNode>& node, int code) {
    const VQLNodeReader reader(code);
    usrprops properties;
    for (const RefCntPtr<VQLNode>& pair : reader.List(node, L"expected property list")) {
        const VQLNodeReader::Nodes& members = reader.List(pair, L"expected property pair");
        if (members.size() != 2) reader.Raise(L"Invalid property pair", pair);
        properties.set(UsrPropKey_FromString(Token(reader, members[0])), Token(reader, members[1]));
    }
    return properties;
}

}  // namespace qve
