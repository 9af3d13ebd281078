#pragma once

#include <initializer_list>
#include <set>
#include <string>
#include <vector>

#include "vql/syntax/VQLIdentifier.h"
#include "vql/syntax/VQLNode.h"

namespace qve {

/// The parts of a session command, read by position; the command's own word stands at 0. Whatever is not as a command
/// wants it is a VQLException "Invalid Command: ", the command's words, ": " and what is wrong.
class VQLCommandArguments {
public:
    /// The list's nodes must outlive this.
    explicit VQLCommandArguments(const std::vector<RefCntPtr<VQLNode>>& nodes) : m_nodes(nodes) {}

    size_t size() const { return m_nodes.size(); }
    const RefCntPtr<VQLNode>& operator[](size_t place) const { return m_nodes[place]; }

    /// Throws VQLException 48041; the first `symbols` arguments name the command. Throws QVE_LogicError 40549 when
    /// there are not so many, QVE_RuntimeError 40548 when one is no symbol.
    [[noreturn]] void Raise(unsigned symbols, const std::wstring& message) const;

    /// Null when there is no such part, or another kind of part, at `place`.
    const std::wstring* Symbol(size_t place) const;
    const std::wstring* String(size_t place) const;
    const VQLDataValue* Literal(size_t place) const;
    const VQLIdentifier* Identifier(size_t place) const;
    const std::vector<RefCntPtr<VQLNode>>* List(size_t place) const;

    /// A part that must be there. `missing` is said when it is not.
    const VQLIdentifier& Identifier(size_t place, const wchar_t* missing) const;
    /// A string literal that must be there: "Missing path", "Path is not a string".
    const std::wstring& PathText(size_t place) const;
    /// The text of each of the `count` components of a name: else `missing`, or `wrong` for another number of them.
    std::vector<std::wstring> Name(size_t place, size_t count, const wchar_t* missing, const wchar_t* wrong) const;
    /// The words from `place` on, each one of `known`: "Missing option", "Unknown option: " and the word.
    std::set<std::wstring> Options(size_t place, std::initializer_list<const wchar_t*> known) const;
    /// "Too many arguments" when there are more than `most` parts.
    void CheckSize(size_t most) const;

private:
    const std::vector<RefCntPtr<VQLNode>>& m_nodes;
};

}  // namespace qve
