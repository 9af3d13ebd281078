#pragma once

#include <string>
#include <utility>
#include <vector>

#include "vql/VQLQuery.h"

namespace qve {

/// Turns columns to rows: each input row becomes one row for each tag.
class VQLPivotQuery : public VQLUnaryQuery {
public:
    /// The name of an output column and its members: the tags, or the columns that give its values in turn.
    using Group = std::pair<VQLIdentifier, std::vector<VQLIdentifier>>;

    /// Each group has as many members as there are tags. `defaultCollation`: that of the tag column; may be empty.
    VQLPivotQuery(VQLPosition position, RefCntPtr<VQLQuery> input, Group tags, std::vector<Group> groups,
                  std::wstring defaultCollation = {});
    void Accept(VQLQueryVisitor& visitor) override;
    const Group& GetTags() const { return m_tags; }
    const std::vector<Group>& GetGroups() const { return m_groups; }
    const std::wstring& DefaultCollation() const { return m_defaultCollation; }

private:
    Group m_tags;
    std::vector<Group> m_groups;
    std::wstring m_defaultCollation;
};

}  // namespace qve
