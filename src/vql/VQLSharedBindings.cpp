#include "vql/VQLSharedBindings.h"

#include <algorithm>

#include "vql/VQLExpressionComparator.h"
#include "vql/syntax/VQLIdentifierFactory.h"

namespace qve {

VQLIdentifier VQLSharedBindings::NameOf(const RefCntPtr<VQLExpression>& expression, const VQLIdentifier& wanted) {
    const VQLExpressionComparator compare;
    const auto found = std::find_if(m_bindings.begin(), m_bindings.end(), [&](const VQLBinding& binding) {
        return compare(binding.second, expression) == 0;
    });
    if (found != m_bindings.end()) return found->first;
    m_bindings.emplace_back(wanted.empty() ? m_factory() : wanted, expression);
    return m_bindings.back().first;
}

}  // namespace qve
