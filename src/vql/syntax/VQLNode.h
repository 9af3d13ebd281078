#pragma once

#include <string>
#include <vector>

#include "system/RefCntPtr.h"
#include "system/VQLException.h"
#include "vql/syntax/VQLDataValue.h"
#include "vql/syntax/VQLIdentifier.h"

namespace qve {

class VQLListNode;
class VQLSymbolNode;
class VQLLiteralNode;
class VQLIdentifierNode;

class VQLNodeVisitor {
public:
    virtual ~VQLNodeVisitor() = default;
    virtual void VisitList(VQLListNode& node) = 0;
    virtual void VisitSymbol(VQLSymbolNode& node) = 0;
    virtual void VisitLiteral(VQLLiteralNode& node) = 0;
    virtual void VisitIdentifier(VQLIdentifierNode& node) = 0;
};

/// A parsed statement as it was written, without meaning. VQLParser bounds the depth of the tree, so walks may recurse.
class VQLNode : public RefCntObject {
public:
    explicit VQLNode(VQLPosition position) : m_position(position) {}
    const VQLPosition& GetPosition() const { return m_position; }
    virtual void Accept(VQLNodeVisitor& visitor) = 0;

private:
    VQLPosition m_position;
};

/// A parenthesised list; its position is that of the parenthesis.
class VQLListNode : public VQLNode {
public:
    using VQLNode::VQLNode;
    void AddNode(RefCntPtr<VQLNode> node) { m_nodes.push_back(std::move(node)); }
    const std::vector<RefCntPtr<VQLNode>>& GetNodes() const { return m_nodes; }
    void Accept(VQLNodeVisitor& visitor) override { visitor.VisitList(*this); }

private:
    std::vector<RefCntPtr<VQLNode>> m_nodes;
};

/// A plain word, as written.
class VQLSymbolNode : public VQLNode {
public:
    VQLSymbolNode(VQLPosition position, std::wstring symbol) : VQLNode(position), m_symbol(std::move(symbol)) {}
    const std::wstring& GetSymbol() const { return m_symbol; }
    void SetSymbol(std::wstring symbol) { m_symbol = std::move(symbol); }
    void Accept(VQLNodeVisitor& visitor) override { visitor.VisitSymbol(*this); }

private:
    std::wstring m_symbol;
};

/// A number, boolean, string, date, datetime or duration.
class VQLLiteralNode : public VQLNode {
public:
    VQLLiteralNode(VQLPosition position, VQLDataValue literal) : VQLNode(position), m_literal(std::move(literal)) {}
    const VQLDataValue& GetLiteral() const { return m_literal; }
    void SetLiteral(VQLDataValue literal) { m_literal = std::move(literal); }
    void Accept(VQLNodeVisitor& visitor) override { visitor.VisitLiteral(*this); }

private:
    VQLDataValue m_literal;
};

/// A bracketed name.
class VQLIdentifierNode : public VQLNode {
public:
    VQLIdentifierNode(VQLPosition position, VQLIdentifier identifier)
        : VQLNode(position), m_identifier(std::move(identifier)) {}
    const VQLIdentifier& GetIdentifier() const { return m_identifier; }
    void SetIdentifier(VQLIdentifier identifier) { m_identifier = std::move(identifier); }
    void Accept(VQLNodeVisitor& visitor) override { visitor.VisitIdentifier(*this); }

private:
    VQLIdentifier m_identifier;
};

}  // namespace qve
