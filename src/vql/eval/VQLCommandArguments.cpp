#include "vql/eval/VQLCommandArguments.h"

#include <algorithm>

#include "system/QuillonException.h"
#include "system/VQLException.h"
#include "vql/eval/status.h"

namespace qve {
namespace {

// Commands are told by two words: what to do, and with what.
constexpr unsigned command_words = 2;

}  // namespace

void VQLCommandArguments::Raise(unsigned symbols, const std::wstring& message) const {
    std::wstring text = L"Invalid Command:";
    if (symbols > m_nodes.size()) {
        throw QVE_LogicError(status::VQLSession_ExecErrorCount, "VQLSession::ExecError: nSymbols > args.size()");
    }
    for (size_t place = 0; place < symbols; ++place) {
        const std::wstring* word = Symbol(place);
        if (!word) {
            throw QVE_RuntimeError(status::VQLSession_ExecErrorSymbol, "VQLSession::ExecError: not a symbol");
        }
        text += L" " + *word;
    }
    throw VQLException(status::VQLSession_ExecError, text + L": " + message);
}

const std::wstring* VQLCommandArguments::Symbol(size_t place) const {
    if (place >= m_nodes.size()) return nullptr;
    const auto* node = dynamic_cast<const VQLSymbolNode*>(m_nodes[place].get());
    return node ? &node->GetSymbol() : nullptr;
}

const VQLDataValue* VQLCommandArguments::Literal(size_t place) const {
    if (place >= m_nodes.size()) return nullptr;
    const auto* node = dynamic_cast<const VQLLiteralNode*>(m_nodes[place].get());
    return node ? &node->GetLiteral() : nullptr;
}

const std::wstring* VQLCommandArguments::String(size_t place) const {
    const VQLDataValue* literal = Literal(place);
    if (!literal || literal->GetType() != VQLDataType::string || literal->IsNull()) return nullptr;
    return &literal->GetString();
}

const VQLIdentifier* VQLCommandArguments::Identifier(size_t place) const {
    if (place >= m_nodes.size()) return nullptr;
    const auto* node = dynamic_cast<const VQLIdentifierNode*>(m_nodes[place].get());
    return node ? &node->GetIdentifier() : nullptr;
}

const std::vector<RefCntPtr<VQLNode>>* VQLCommandArguments::List(size_t place) const {
    if (place >= m_nodes.size()) return nullptr;
    const auto* node = dynamic_cast<const VQLListNode*>(m_nodes[place].get());
    return node ? &node->GetNodes() : nullptr;
}

const VQLIdentifier& VQLCommandArguments::Identifier(size_t place, const wchar_t* missing) const {
    const VQLIdentifier* identifier = Identifier(place);
    if (!identifier) Raise(command_words, missing);
    return *identifier;
}

const std::wstring& VQLCommandArguments::PathText(size_t place) const {
    if (place >= size()) Raise(command_words, L"Missing path");
    const std::wstring* text = String(place);
    if (!text) Raise(command_words, L"Path is not a string");
    return *text;
}

std::vector<std::wstring> VQLCommandArguments::Name(size_t place, size_t count, const wchar_t* missing,
                                                    const wchar_t* wrong) const {
    const auto& components = Identifier(place, missing).GetComponents();
    if (components.size() != count) Raise(command_words, wrong);
    std::vector<std::wstring> texts;
    for (const auto& component : components) texts.push_back(component.AsString());
    return texts;
}

std::set<std::wstring> VQLCommandArguments::Options(size_t place, std::initializer_list<const wchar_t*> known) const {
    std::set<std::wstring> options;
    for (; place < size(); ++place) {
        const std::wstring* option = Symbol(place);
        if (!option) Raise(command_words, L"Missing option");
        if (std::none_of(known.begin(), known.end(), [option](const wchar_t* word) { return *option == word; })) {
            Raise(command_words, L"Unknown option: " + *option);
        }
        options.insert(*option);
    }
    return options;
}

void VQLCommandArguments::CheckSize(size_t most) const {
    if (size() > most) Raise(command_words, L"Too many arguments");
}

}  // namespace qve
