#include "vql/VQLFunctionTable.h"

#include <algorithm>
#include <optional>

#include "system/VQLException.h"
#include "vql/status.h"

namespace qve {

namespace {

using Matches = std::vector<const VQLFunction*>;

bool IsPromotable(VQLDataType from, VQLDataType to) {
    return (from == VQLDataType::integer && to == VQLDataType::double_) ||
           (from == VQLDataType::date && to == VQLDataType::datetime);
}

/// The one type of all types that are known; nothing when there are several, or none.
std::optional<VQLDataType> OnlyKnownType(const VQLFunctionTable::Types& types) {
    std::optional<VQLDataType> known;
    for (const VQLDataType type : types) {
        if (type == VQLDataType::unknown) continue;
        if (known && *known != type) return {};
        known = type;
    }
    return known;
}

}  // namespace

void VQLFunctionTable::Insert(VQLFunction function) {
    std::wstring name = function.GetName();
    m_entries.emplace(std::move(name), std::move(function));
}

std::wstring VQLFunctionTable::Signature(const std::wstring& name, const Types& types) {
    std::wstring signature = name;
    for (const VQLDataType type : types)
        signature += L" " + (type <= VQLDataType::duration ? FormatDataType(type) : std::wstring(L"???"));
    return signature;
}

std::vector<const VQLFunction*> VQLFunctionTable::ResolveMatches(const std::wstring& name, const Types& types) const {
    const auto [begin, end] = Find(name);
    const auto find = [&, begin = begin, end = end](auto fits) {
        Matches matches;
        for (auto entry = begin; entry != end; ++entry) {
            const Types& declared = entry->second.GetArguments();
            if (std::equal(types.begin(), types.end(), declared.begin(), declared.end(), fits))
                matches.push_back(&entry->second);
        }
        return matches;
    };

    Matches exact = find([](VQLDataType given, VQLDataType declared) { return given == declared; });
    if (!exact.empty()) return {exact.front()};

    Matches wildcard = find(
        [](VQLDataType given, VQLDataType declared) { return given == declared || given == VQLDataType::unknown; });
    if (wildcard.size() > 1) {
        if (const auto known = OnlyKnownType(types)) {
            const Types uniform(types.size(), *known);
            const auto found = std::find_if(wildcard.begin(), wildcard.end(),
                                            [&](const VQLFunction* match) { return match->GetArguments() == uniform; });
            if (found != wildcard.end()) return {*found};
        }
    }
    if (!wildcard.empty()) return wildcard;

    return find([](VQLDataType given, VQLDataType declared) {
        return given == declared || given == VQLDataType::unknown || IsPromotable(given, declared);
    });
}

const VQLFunction& VQLFunctionTable::Resolve(const std::wstring& name, const Types& types) const {
    const Matches matches = ResolveMatches(name, types);
    if (matches.empty())
        throw VQLException(status::VQLFunctionTable_Resolve_None,
                           L"no such function (" + Signature(name, types) + L")");
    if (matches.size() > 1)
        throw VQLException(status::VQLFunctionTable_Resolve_Ambiguous,
                           L"ambiguous function call (" + Signature(name, types) + L"), " +
                               std::to_wstring(matches.size()) + L" possible resolutions");
    return *matches.front();
}

VQLDataType VQLFunctionTable::ResolveCaseType(const Types& types, VQLDataType noTypes) {
    if (types.empty()) return noTypes;
    VQLDataType result = VQLDataType::unknown;
    for (auto type = types.rbegin(); type != types.rend(); ++type) {
        if (*type == result || *type == VQLDataType::unknown) continue;
        if (result == VQLDataType::unknown || IsPromotable(result, *type))
            result = *type;
        else if (!IsPromotable(*type, result))
            throw VQLException(status::VQLFunctionTable_ResolveCaseType,
                               L"mismatched case result types (" + Signature(L"case", types) + L")");
    }
    return result;
}

}  // namespace qve
