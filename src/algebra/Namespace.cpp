#include "algebra/Namespace.h"

#include <algorithm>
#include <utility>

#include "storage/Column.h"

namespace qve {

unsigned Namespace::s_blockLength = 1024;

RefCntPtr<Namespace> Namespace::Execute(unsigned) {
    return RefCntPtr<Namespace>(this);
}

bool Namespace::HasColumn(const std::wstring& name) const {
    return GetColumnNames().contains(name);
}

unsigned long Namespace::GetMemoryBudget() const {
    return m_memoryBudget;
}

void Namespace::SetMemoryBudget(unsigned long bytes) {
    m_memoryBudget = bytes;
}

std::vector<Namespace::SortSpec> Namespace::BuildSortSpecs(const Namespace& columns) {
    std::vector<std::pair<uint64_t, SortSpec>> keys;
    for (const std::wstring& name : columns.GetColumnNames()) {
        const RefCntPtr<Column> column = columns.DescribeColumn(name);
        if (!column->HasProperty(usrpropkey::sort_position)) continue;
        const bool descending = column->GetProperties().text(usrpropkey::sort_sense) == L"desc";
        keys.emplace_back(column->GetSizeProperty(usrpropkey::sort_position), SortSpec{name, descending});
    }
    std::stable_sort(keys.begin(), keys.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    std::vector<SortSpec> specs;
    specs.reserve(keys.size());
    for (auto& key : keys) specs.push_back(std::move(key.second));
    return specs;
}

}  // namespace qve
