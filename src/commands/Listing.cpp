#include "commands/Listing.h"

#include "algebra/LeafTable.h"
#include "storage/stream/TempFileDataStream.h"
#include "system/unicode.h"
#include "types/builtin.h"
#include "types/varchar.h"

namespace qve {

std::wstring Listing::Place(const std::wstring& name, usrprops& properties) const {
    std::wstring full = m_prefix + name;
    properties.set(usrpropkey::ordinal, m_columns.size());
    properties.set(usrpropkey::name, full);
    return full;
}

void Listing::Add(const std::wstring& name, usrprops properties, const void* cells, uint64_t bytes) {
    const std::wstring full = Place(name, properties);
    auto data = MakeRef<TempFileDataStream>();
    if (bytes > 0) data->Append(cells, bytes);
    data->Seek(0, bytes);
    m_columns.insert_or_assign(full, MakeRef<Column>(std::move(properties), std::move(data)));
}

void Listing::AddTexts(const std::wstring& name, const std::vector<std::wstring>& values) {
    usrprops properties = varchar::propsof(varchar::clob_precision, 1);
    properties.set(usrpropkey::compression, L"heap");
    properties.set(usrpropkey::storagewidth, 8);
    properties.set(usrpropkey::not_null, true);
    properties.set(usrpropkey::distinct, true);
    const std::wstring full = Place(name, properties);
    auto column = MakeRef<Column>(std::move(properties), MakeRef<TempFileDataStream>(), MakeRef<TempFileDataStream>());
    for (const std::wstring& value : values) {
        const std::string text = narrow(value);
        column->Append(1, usratom(column->GetType(), text.data(), text.size()), false);
    }
    m_columns.insert_or_assign(full, std::move(column));
}

void Listing::AddNumbers(const std::wstring& name, const std::vector<long long>& values) {
    std::vector<long long> cells = values;
    for (long long& cell : cells) {
        if (cell < 0) cell = datatraits<bigint>::null;
    }
    Add(name, builtin::primitive_props(L"bigint"), cells.data(), cells.size() * sizeof cells[0]);
}

void Listing::AddFigures(const std::wstring& name, const std::vector<double>& values) {
    usrprops properties = builtin::primitive_props(L"double");
    properties.set(usrpropkey::not_null, true);
    Add(name, std::move(properties), values.data(), values.size() * sizeof values[0]);
}

void Listing::AddMoments(const std::wstring& name, const std::vector<datetime>& values) {
    Add(name, builtin::primitive_props(L"datetime"), values.data(), values.size() * sizeof values[0]);
}

RefCntPtr<Table> Listing::Finish() {
    return MakeRef<LeafTable>(m_table, std::move(m_columns));
}

}  // namespace qve
