#pragma once

#include <optional>
#include <string>
#include <vector>

#include "algebra/Grouping.h"

namespace qve {

/// A strategy of grouping that is to be tried before all others, wherever its rules allow it; for tests, and to compare
/// strategies. Process-wide; any thread.
class ForcedGrouping {
public:
    static std::optional<GroupingIdType> Get();
    /// By the strategy's display name; the empty text for none, which is the default. Raises QVE_InvalidArgument 40218
    /// for any other text.
    static void Set(const std::wstring& name);
    /// The display name; empty for none.
    static std::wstring GetName();

    /// `strategies` with the forced one first.
    static std::vector<GroupingIdType> Order(std::vector<GroupingIdType> strategies);
};

}  // namespace qve
