#include "algebra/ForcedGrouping.h"

#include <atomic>

#include "algebra/status.h"
#include "system/QuillonException.h"
#include "system/unicode.h"

namespace qve {

namespace {

constexpr unsigned nothingForced = ~0u;
std::atomic<unsigned> forced{nothingForced};

}  // namespace

std::optional<GroupingIdType> ForcedGrouping::Get() {
    const unsigned id = forced.load(std::memory_order_relaxed);
    if (id == nothingForced) return std::nullopt;
    return static_cast<GroupingIdType>(id);
}

void ForcedGrouping::Set(const std::wstring& name) {
    if (name.empty()) {
        forced = nothingForced;
        return;
    }
    for (unsigned id = 0; id <= static_cast<unsigned>(GroupingIdType::sharedJoin); ++id) {
        if (Grouping::GetName(static_cast<GroupingIdType>(id)) != name) continue;
        forced = id;
        return;
    }
    throw QVE_InvalidArgument(status::ForcedGrouping_unknown, "unknown grouping " + narrow(name));
}

std::wstring ForcedGrouping::GetName() {
    const std::optional<GroupingIdType> id = Get();
    return id ? Grouping::GetName(*id) : std::wstring();
}

std::vector<GroupingIdType> ForcedGrouping::Order(std::vector<GroupingIdType> strategies) {
    if (const std::optional<GroupingIdType> id = Get()) strategies.insert(strategies.begin(), *id);
    return strategies;
}

}  // namespace qve
