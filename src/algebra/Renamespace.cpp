#include "algebra/Renamespace.h"

#include "algebra/status.h"
#include "storage/Column.h"
#include "system/QuillonException.h"
#include "system/unicode.h"

namespace qve {

Renamespace::Renamespace(RefCntPtr<Namespace> target, const Renames& renames) : DelegatedNamespace(std::move(target)) {
    for (const std::wstring& name : m_target->GetColumnNames()) {
        const auto renamed = renames.find(name);
        m_originals.emplace(renamed == renames.end() ? name : renamed->second, name);
    }
}

ColumnNames Renamespace::GetColumnNames() const {
    ColumnNames names;
    for (const auto& entry : m_originals) names.insert(names.end(), entry.first);
    return names;
}

bool Renamespace::HasColumn(const std::wstring& name) const {
    return m_originals.contains(name);
}

RefCntPtr<Column> Renamespace::GetColumn(const std::wstring& name) const {
    const auto found = m_originals.find(name);
    if (found == m_originals.end()) {
        throw QVE_OutOfRange(status::Renamespace_GetColumn, "Renamespace::GetColumn: " + narrow(name));
    }
    return m_target->GetColumn(found->second);
}

RefCntPtr<Column> Renamespace::DescribeColumn(const std::wstring& name) const {
    const auto found = m_originals.find(name);
    if (found == m_originals.end()) {
        throw QVE_OutOfRange(status::Renamespace_DescribeColumn, "Renamespace::DescribeColumn: " + narrow(name));
    }
    return m_target->DescribeColumn(found->second);
}

}  // namespace qve
