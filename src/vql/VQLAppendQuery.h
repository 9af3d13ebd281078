#pragma once

#include <utility>
#include <vector>

#include "vql/VQLQuery.h"

namespace qve {

/// The rows of several inputs, one input after the other.
class VQLAppendQuery : public VQLQuery {
public:
    /// From a right input's column to the left input's column that it continues.
    using Rename = std::pair<VQLIdentifier, VQLIdentifier>;
    using Renames = std::vector<Rename>;

    /// `renamesList` has one entry for each right input.
    VQLAppendQuery(VQLPosition position, RefCntPtr<VQLQuery> left, std::vector<RefCntPtr<VQLQuery>> rightList,
                   std::vector<Renames> renamesList);
    void Accept(VQLQueryVisitor& visitor) override;
    const RefCntPtr<VQLQuery>& GetLeft() const { return m_left; }
    const std::vector<RefCntPtr<VQLQuery>>& GetRightList() const { return m_rightList; }
    const std::vector<Renames>& GetRenamesList() const { return m_renamesList; }

private:
    RefCntPtr<VQLQuery> m_left;
    std::vector<RefCntPtr<VQLQuery>> m_rightList;
    std::vector<Renames> m_renamesList;
};

}  // namespace qve
