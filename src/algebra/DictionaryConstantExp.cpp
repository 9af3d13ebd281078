#include "algebra/DictionaryConstantExp.h"

#include <cstring>

#include "algebra/exact_cast.h"
#include "storage/Column.h"
#include "storage/stream/TempFileDataStream.h"
#include "types/usrheap.h"
#include "types/usrtype.h"

namespace qve {

namespace {

// Bytes of a dictionary for which an index is built just to find one value.
constexpr uint64_t indexLimit = uint64_t{4} << 20;

// The null at the beginning of a heap takes two bytes at least, so no entry begins at the second.
constexpr uint64_t absentToken = 1;

void PutToken(Column& column, uint64_t token) {
    const output_column out = column.GetOutput(0);
    std::memcpy(out.data, &token, out.width);  // little-endian: the low bytes come first
}

}  // namespace

DictionaryConstantExp::DictionaryConstantExp(RefCntPtr<Column> token, RefCntPtr<Column> column, usratom value)
    : ConstantExp(std::move(token)), m_source(std::move(column)), m_value(std::move(value)) {
    Lookup();
}

RefCntPtr<DictionaryConstantExp> DictionaryConstantExp::Make(const usratom& value, RefCntPtr<Column> column) {
    const usrheap* heap = column->GetHeap();
    if (value.isnull() || !heap || column->GetProperties().text(usrpropkey::compression) != L"heap") return nullptr;
    if (!column->GetDict()->GetAccelerator() && heap->next() > indexLimit) return nullptr;

    usrprops properties = column->GetProperties();
    properties.set(usrpropkey::storagetype, Column::storageVal);
    properties.set(usrpropkey::not_null, true);
    properties.erase(usrpropkey::encoding);
    auto token = MakeRef<Column>(std::move(properties), MakeRef<TempFileDataStream>(), column->GetDict());
    token->Extend(1);
    token->Seek(0, 1);
    usratom stored = exact_cast(value, *column->GetType());
    return MakeRef<DictionaryConstantExp>(std::move(token), std::move(column), std::move(stored));
}

void DictionaryConstantExp::Lookup() {
    m_dictionary = m_source->GetDict();
    m_entries = m_source->GetHeap()->next();
    if (m_column->GetDict() != m_source->GetDict()) m_column->SetDict(m_source->GetDict());
    const uint64_t token = m_value.type() ? m_source->GetDictionaryToken(m_value) : usrheap::null_token;
    PutToken(*m_column, token == usrheap::null_token ? absentToken : token);
}

void DictionaryConstantExp::Refresh() {
    if (m_source->GetDict() != m_dictionary || m_source->GetHeap()->next() != m_entries) Lookup();
}

}  // namespace qve
