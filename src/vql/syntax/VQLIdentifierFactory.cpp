#include "vql/syntax/VQLIdentifierFactory.h"

namespace qve {

VQLIdentifier VQLIdentifierFactory::operator()(const wchar_t* hint) {
    for (;;) {
        std::wstring name = L"$temp" + std::to_wstring(m_counter++);
        if (hint) name.append(L"_").append(hint);
        if (!m_dictionary.count(name)) return VQLIdentifier::Unquoted(name, m_dictionary);
    }
}

VQLIdentifier VQLIdentifierFactory::Uniquify(const VQLIdentifier& name) {
    const VQLIdentifier tail = name.Tail();
    const std::wstring text = tail.empty() ? std::wstring() : tail.GetComponents()[0].AsString();
    for (;;) {
        const std::wstring candidate = text + L"#" + std::to_wstring(m_counter++);
        if (m_dictionary.count(candidate)) continue;
        return VQLIdentifier::Join(name.Head(), VQLIdentifier::Unquoted(candidate, m_dictionary), m_dictionary);
    }
}

}  // namespace qve
