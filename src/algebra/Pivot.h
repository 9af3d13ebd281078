#pragma once

#include <memory>
#include <string>
#include <vector>

#include "algebra/DataFlow.h"
#include "algebra/JoinColumns.h"

namespace qve {

class Appender;

/// Turns columns into rows: a page of the source comes once for each tag, with the tag's name in one column and in the
/// column of each group the cells of the member that stands at the tag's place. All other columns pass untouched.
class Pivot : public DataFlow {
public:
    /// The name of an output column and its members: the tags, or the columns that give its values in turn.
    struct Group {
        std::wstring name;
        std::vector<std::wstring> members;
    };

    /// `collation` is that of the tags, or empty. Raises QVE_InvalidArgument 40312 when a group has not as many members
    /// as there are tags, and Append_types when its members have no type in common.
    Pivot(RefCntPtr<DataFlow> source, Group tags, std::vector<Group> groups, std::wstring collation = {});
    ~Pivot() override;

    void Accept(OperatorVisitor& visitor) override;
    void ResetCursor() override;
    unsigned Next(unsigned pageSize) override;
    RefCntPtr<Column> LoadColumn(const std::wstring& name) const override;
    RefCntPtr<Column> LookupColumn(const std::wstring& name) const override;

    const Group& GetTags() const { return m_tags; }
    const std::vector<Group>& GetGroups() const { return m_groups; }
    const std::wstring& GetCollation() const { return m_collation; }

private:
    RefCntPtr<Column> MakeTagColumn() const;
    void FillTags();

    const Group m_tags;
    const std::vector<Group> m_groups;
    const std::wstring m_collation;
    std::vector<std::unique_ptr<Appender>> m_appenders;  // of the groups
    mutable JoinColumns m_shown{false, false};           // the columns that pass
    RefCntPtr<Column> m_tagColumn;
    bool m_bound = false;
    size_t m_place = 0;  // of the tag that comes next
};

}  // namespace qve
