#include "vql/syntax/VQLTokenSymbols.h"

namespace qve {

VQLTokenSymbols::token VQLTokenSymbols::Intern(std::wstring_view text) {
    const auto found = m_texts.find(text);
    return found != m_texts.end() ? &*found : &*m_texts.emplace(text).first;
}

}  // namespace qve
