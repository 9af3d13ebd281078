#pragma once

#include <map>
#include <string>
#include <vector>

#include "vql/VQLFunction.h"

namespace qve {

/// Functions by name, and the choice among the signatures of one name.
class VQLFunctionTable {
public:
    using Types = std::vector<VQLDataType>;
    using Entries = std::multimap<std::wstring, VQLFunction, std::less<>>;

    void Insert(VQLFunction function);
    /// The signatures of a name in the order of their insertion.
    std::pair<Entries::const_iterator, Entries::const_iterator> Find(const std::wstring& name) const {
        return m_entries.equal_range(name);
    }
    const Entries& GetEntries() const { return m_entries; }

    /// The name followed by the name of each type, as errors show it.
    static std::wstring Signature(const std::wstring& name, const Types& types);

    /// The signatures that fit, in three passes of which the first with a result decides: equal types (one signature at
    /// most); types equal or unknown; types equal, unknown or promotable, integer to double and date to datetime.
    /// Where several fit in the second pass and all known types are one, a signature of that type throughout wins
    /// alone: a null takes the type of what it stands beside.
    std::vector<const VQLFunction*> ResolveMatches(const std::wstring& name, const Types& types) const;
    /// The one signature that fits. Throws VQLException 48032 "no such function (%1)" and 48030 "ambiguous function
    /// call
    /// (%1), %2 possible resolutions".
    const VQLFunction& Resolve(const std::wstring& name, const Types& types) const;
    /// The type of a case whose values have these types; `noTypes` for an empty list. Throws VQLException 48031
    /// "mismatched case result types (%1)".
    static VQLDataType ResolveCaseType(const Types& types, VQLDataType noTypes);

private:
    Entries m_entries;
};

}  // namespace qve
