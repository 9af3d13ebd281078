#include "vql/eval/ResultFlow.h"

#include <algorithm>

#include "algebra/take_error_counts.h"
#include "storage/Column.h"

namespace qve {

ResultFlow::ResultFlow(RefCntPtr<DataFlow> source, std::vector<std::wstring> names)
    : Restrict(std::move(source), ColumnNames(names.begin(), names.end())), m_names(std::move(names)) {}

ResultFlow::~ResultFlow() = default;

RefCntPtr<Column> ResultFlow::WithOrdinal(const Column& source, const std::wstring& name) const {
    const auto place = std::find(m_names.begin(), m_names.end(), name);
    usrprops properties = source.GetProperties();
    properties.set(usrpropkey::ordinal, static_cast<unsigned long>(place - m_names.begin()));
    return MakeRef<Column>(std::move(properties));
}

RefCntPtr<Column> ResultFlow::LoadColumn(const std::wstring& name) const {
    const RefCntPtr<Column> source = Restrict::LoadColumn(name);
    RefCntPtr<Column> column = WithOrdinal(*source, name);
    column->ShareStreams(*source);
    m_shared.emplace_back(source, column);
    return column;
}

RefCntPtr<Column> ResultFlow::LookupColumn(const std::wstring& name) const {
    return WithOrdinal(*Restrict::LookupColumn(name), name);
}

unsigned ResultFlow::Next(unsigned pageSize) {
    const unsigned extent = Restrict::Next(pageSize);
    for (const auto& [source, column] : m_shared) {
        column->ShareStreams(*source);
        if (extent == 0) TakeErrorCounts(*source, *column);
    }
    return extent;
}

}  // namespace qve
