#include "algebra/Pivot.h"

#include "algebra/Appender.h"
#include "algebra/OperatorVisitor.h"
#include "algebra/reserve_page.h"
#include "algebra/status.h"
#include "storage/Column.h"
#include "storage/stream/TempFileDataStream.h"
#include "system/QuillonException.h"
#include "system/unicode.h"
#include "types/usratom.h"
#include "types/varchar.h"

namespace qve {

namespace {

ColumnNames OutputNames(const DataFlow& source, const Pivot::Group& tags, const std::vector<Pivot::Group>& groups) {
    ColumnNames names = source.GetColumnNames();
    for (const Pivot::Group& group : groups) {
        for (const std::wstring& member : group.members) names.erase(member);
    }
    names.insert(tags.name);
    for (const Pivot::Group& group : groups) names.insert(group.name);
    return names;
}

}  // namespace

Pivot::Pivot(RefCntPtr<DataFlow> source, Group tags, std::vector<Group> groups, std::wstring collation)
    : DataFlow(source, OutputNames(*source, tags, groups)),
      m_tags(std::move(tags)),
      m_groups(std::move(groups)),
      m_collation(std::move(collation)) {
    for (const Group& group : m_groups) {
        if (group.members.size() != m_tags.members.size()) {
            throw QVE_InvalidArgument(status::Pivot_Pivot, "Pivot::Pivot: group/tag size mismatch");
        }
        std::vector<Appender::Input> inputs;
        for (const std::wstring& member : group.members) inputs.push_back({m_source.get(), member});
        m_appenders.push_back(std::make_unique<Appender>(group.name, std::move(inputs)));
    }
}

Pivot::~Pivot() = default;

void Pivot::Accept(OperatorVisitor& visitor) {
    visitor.VisitPivot(*this);
}

RefCntPtr<Column> Pivot::MakeTagColumn() const {
    usrprops properties =
        varchar::propsof(varchar::clob_precision, 1, m_collation.empty() ? nullptr : m_collation.c_str());
    properties.set(usrpropkey::name, m_tags.name);
    properties.set(usrpropkey::compression, L"heap");
    properties.set(usrpropkey::distinct, true);
    properties.set(usrpropkey::not_null, true);
    return MakeRef<Column>(std::move(properties), MakeRef<TempFileDataStream>(), MakeRef<TempFileDataStream>());
}

RefCntPtr<Column> Pivot::LoadColumn(const std::wstring& name) const {
    if (name == m_tags.name) return MakeTagColumn();
    for (size_t i = 0; i < m_groups.size(); ++i) {
        if (m_groups[i].name == name) return m_appenders[i]->Load();
    }
    return m_shown.AddOuter(m_source->GetColumn(name));
}

RefCntPtr<Column> Pivot::LookupColumn(const std::wstring& name) const {
    if (name == m_tags.name) return MakeTagColumn();
    for (size_t i = 0; i < m_groups.size(); ++i) {
        if (m_groups[i].name == name) return m_appenders[i]->Describe();
    }
    return MakeRef<Column>(m_shown.DescribeOuter(*m_source->DescribeColumn(name)));
}

void Pivot::ResetCursor() {
    DataFlow::ResetCursor();
    m_place = 0;
}

unsigned Pivot::Next(unsigned pageSize) {
    if (!m_bound) {
        for (const auto& entry : m_columns) GetColumn(entry.first);
        m_tagColumn = GetColumn(m_tags.name);
        m_bound = true;
    }
    if (m_place == 0) {
        if (DataFlow::Next(pageSize) == 0) return 0;
        m_shown.PassOuter();
    }
    for (const std::unique_ptr<Appender>& appender : m_appenders) {
        appender->Evaluate(m_place, m_selectionCount, m_extent, m_selection);
    }
    FillTags();
    m_place = (m_place + 1) % m_tags.members.size();
    return m_extent;
}

void Pivot::FillTags() {
    const output_column out = reserve_page(*m_tagColumn, m_extent);
    const std::string name = narrow(m_tags.members[m_place]);
    const usratom tag(m_tagColumn->GetType(), name.data(), name.size());
    m_tagColumn->Overlay(m_extent, tag);
    *out.flags |= column_flags::not_null;
}

}  // namespace qve
