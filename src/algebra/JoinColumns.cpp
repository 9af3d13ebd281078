#include "algebra/JoinColumns.h"

#include <algorithm>

#include "algebra/adopt_cells.h"
#include "algebra/reserve_page.h"
#include "primitives/column_kernels.h"
#include "storage/Column.h"
#include "storage/stream/TempFileDataStream.h"

namespace qve {

namespace {

// What is said of all rows of a column, and does not hold of the rows of a join.
constexpr usrpropkey invalidated[] = {
    usrpropkey::encoding,    usrpropkey::dense,       usrpropkey::unique,        usrpropkey::primary_key,
    usrpropkey::ordered,     usrpropkey::sort_sense,  usrpropkey::sort_position, usrpropkey::sum_value,
    usrpropkey::sum2_value,  usrpropkey::count_value, usrpropkey::median_value,  usrpropkey::generated_by,
    usrpropkey::storagetype,
};

usrprops ClearProperties(const Column& column, bool nulls) {
    usrprops properties = column.GetProperties();
    for (const usrpropkey key : invalidated) properties.erase(key);
    if (nulls) properties.erase(usrpropkey::not_null);
    return properties;
}

// The kernel that picks cells of a column by number; what is not there becomes the null of the type.
binary_func ResolveFetch(const Column& column) {
    if (!column.IsCompressed()) {
        const primitive::argument_list arguments = {
            {L"ulng", primitive::storageCol},
            {column.GetPrimitiveType(usrpropkey::compression), primitive::storageCol}};
        for (primitive* candidate : primitive::resolve(L"fetch", arguments)) {
            if (candidate->klass() == primitive::klassMap) return ResolvePrimitive<binary_func>(candidate);
        }
    }
    return map_fetch_ulng_col_type_col(column.GetTokenSize());
}

input_column Numbers(const unsigned* rows, unsigned count) {
    return {rows, nullptr, sizeof(unsigned), count, column_flags::not_null};
}

}  // namespace

JoinColumns::JoinColumns(bool keepsInner, bool keepsOuter) : m_outerNulls(keepsInner), m_innerNulls(keepsOuter) {}
JoinColumns::~JoinColumns() = default;

usrprops JoinColumns::DescribeOuter(const Column& source) const {
    return ClearProperties(source, m_outerNulls);
}

usrprops JoinColumns::DescribeInner(const Column& inner, const std::wstring& name) const {
    usrprops properties = ClearProperties(inner, m_innerNulls);
    for (const usrpropkey key : {usrpropkey::min_value, usrpropkey::max_value}) properties.erase(key);
    properties.set(usrpropkey::name, name);
    return properties;
}

RefCntPtr<Column> JoinColumns::AddOuter(RefCntPtr<Column> source, const std::wstring* name) {
    auto shown = MakeRef<Column>(DescribeOuter(*source), nullptr, source->GetDict());
    if (name) shown->SetName(*name);
    m_outer.push_back({std::move(source), shown, nullptr, nullptr});
    if (m_outer.back().source->GetData()) Pass(m_outer.back());
    return shown;
}

RefCntPtr<Column> JoinColumns::AddInner(RefCntPtr<Column> inner, const std::wstring& name) {
    auto shown = MakeRef<Column>(DescribeInner(*inner, name), nullptr, inner->GetDict());
    m_inner.push_back({std::move(inner), shown, nullptr, nullptr});
    return shown;
}

void JoinColumns::BindInner(uint64_t start, uint64_t count, const ProgressCallback* progress, bool forked) {
    for (Inner& column : m_inner) {
        if (forked) column.source = column.source->Fork(true);
        adopt_cells(*column.shown, *column.source);
        column.cells = std::make_unique<WholeColumn>(*column.source, start, count, progress);
        column.fetch = ResolveFetch(*column.source);
    }
}

// Also the width of tokens is the page's: a flow may widen them on its way.
void JoinColumns::Pass(Outer& column) {
    if (column.shown->GetTokenSize() != column.source->GetTokenSize()) {
        column.shown->SetProperty(usrpropkey::storagewidth, std::to_wstring(column.source->GetTokenSize()));
    }
    column.shown->ShareStreams(*column.source);
    column.shown->SetFlags(column.source->GetFlags());
}

void JoinColumns::PassOuter() {
    for (Outer& column : m_outer) Pass(column);
}

// The page of copied cells of a column, for the dictionary and the width that its source has now.
Column& JoinColumns::PickedPage(Outer& column) {
    const Column& source = *column.source;
    if (!column.picked || column.picked->GetTokenSize() != source.GetTokenSize()) {
        usrprops properties = column.shown->GetProperties();
        if (column.source->IsCompressed()) properties.set(usrpropkey::storagewidth, source.GetTokenSize());
        column.picked = MakeRef<Column>(std::move(properties));
        column.fetch = ResolveFetch(*column.picked);
    }
    if (source.GetDict() && column.picked->GetDict() != source.GetDict()) column.picked->SetDict(source.GetDict());
    return *column.picked;
}

void JoinColumns::Pick(Outer& column, unsigned count, const unsigned* rows, input_column from) {
    Column& page = PickedPage(column);
    const output_column out = reserve_page(page, count);
    page.SetFlags(0);
    column.fetch(count, out, Numbers(rows, count), from, nullptr);
    if (column.shown->GetTokenSize() != page.GetTokenSize()) {
        column.shown->SetProperty(usrpropkey::storagewidth, std::to_wstring(page.GetTokenSize()));
    }
    column.shown->ShareStreams(page);
    column.shown->SetFlags(page.GetFlags());
}

void JoinColumns::PickOuter(unsigned count, const unsigned* rows) {
    for (Outer& column : m_outer) Pick(column, count, rows, column.source->GetInput(0));
}

void JoinColumns::ClearOuter(unsigned count) {
    if (m_noRows.size() < count) m_noRows.resize(count, ~0u);
    for (Outer& column : m_outer) {
        Pick(column, count, m_noRows.data(), input_column{nullptr, nullptr, column.source->GetTokenSize(), 0, 0});
    }
}

void JoinColumns::PickInner(unsigned count, unsigned extent, const unsigned* rows, const unsigned* sel) {
    for (Inner& column : m_inner) {
        const output_column out = reserve_page(*column.shown, extent);
        column.shown->SetFlags(0);
        column.fetch(count, out, Numbers(rows, extent), column.cells->GetInput(), sel);
    }
}

}  // namespace qve
