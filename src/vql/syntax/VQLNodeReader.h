#pragma once

#include <string>
#include <vector>

#include "vql/syntax/VQLNode.h"

namespace qve {

/// Takes statement nodes apart for the builders. Each operation throws VQLParseException with the reader's code at the
/// node when the node is not what is asked for.
class VQLNodeReader {
public:
    using Nodes = std::vector<RefCntPtr<VQLNode>>;

    explicit VQLNodeReader(int code) : m_code(code) {}

    const Nodes& List(const RefCntPtr<VQLNode>& node, const wchar_t* message = L"expected list") const;
    /// A list of exactly `count` members.
    const Nodes& List(const RefCntPtr<VQLNode>& node, size_t count, const wchar_t* countMessage) const;
    /// The members of a form: a list that begins with a symbol. "expected list", "empty list", "expected symbol".
    const Nodes& Form(const RefCntPtr<VQLNode>& node) const;
    /// The word of a form that Form has passed.
    static const std::wstring& Head(const Nodes& form);
    const std::wstring& Symbol(const RefCntPtr<VQLNode>& node, const wchar_t* message = L"expected symbol") const;
    const VQLIdentifier& Identifier(const RefCntPtr<VQLNode>& node) const;
    const VQLDataValue& Literal(const RefCntPtr<VQLNode>& node) const;
    /// A literal that is a string; `message` for a literal of another type.
    const std::wstring& String(const RefCntPtr<VQLNode>& node, const wchar_t* message) const;
    /// An integer literal between the bounds.
    long long Integer(const RefCntPtr<VQLNode>& node, long long min, long long max) const;

    [[noreturn]] void Raise(std::wstring message, const RefCntPtr<VQLNode>& node) const;

private:
    int m_code;
};

}  // namespace qve
