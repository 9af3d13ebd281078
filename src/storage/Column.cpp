#include "storage/Column.h"

#include <algorithm>
#include <bit>

#include "storage/DictionaryEntriesDataStream.h"
#include "storage/EncodingFactory.h"
#include "storage/status.h"
#include "storage/stream/ReadOnlyDataStream.h"
#include "system/QuillonException.h"
#include "system/unicode.h"
#include "types/builtin.h"

namespace qve {

const std::wstring Column::nameDict = L".DICT";
const std::wstring Column::nameFreq = L".FREQ";
const std::wstring Column::nameRank = L".RANK";
const std::wstring Column::nameStart = L".START";
const std::wstring Column::nameCount = L".COUNT";
const std::wstring Column::storageCol = L"col";
const std::wstring Column::storageVal = L"val";
const std::wstring Column::storageVir = L"vir";
std::atomic<uint64_t> Column::s_usrAcceleratorThreshold{32768};

namespace {

/// Whether a property takes part in the choice of the type.
bool DenotesType(usrpropkey key) {
    switch (key) {
        case usrpropkey::factory:
        case usrpropkey::builtin:
        case usrpropkey::factory_varchar:
        case usrpropkey::factory_spatial:
        case usrpropkey::size:
        case usrpropkey::precision:
        case usrpropkey::scale:
        case usrpropkey::collation:
            return true;
        default:
            return false;
    }
}

bool IsTokenWidth(uint64_t width) {
    return width == 1 || width == 2 || width == 4 || width == 8;
}

}  // namespace

Column::Column(usrprops properties, RefCntPtr<DataStream> data, RefCntPtr<DataStream> dictionary)
    : m_properties(std::move(properties)), m_dictionary(std::move(dictionary)) {
    ResolveType();
    UpdateHints();
    MakeHeap();
    if (!data) return;
    if (m_compressed && !m_dictionary) throw QVE_InvalidArgument(status::Column_SetData, "Column::SetData");
    SetData(std::move(data));
}

Column::Column(const Column& other, RefCntPtr<DataStream> data)
    : RefCntObject(), m_properties(other.m_properties), m_dictionary(other.m_dictionary), m_type(other.m_type) {
    UpdateHints();
    MakeHeap();
    if (data && m_compressed && !m_dictionary) {
        throw QVE_InvalidArgument(status::Column_SetData_copy, "Column::SetData");
    }
    SetData(std::move(data));
}

Column::~Column() = default;

// Properties

const std::wstring& Column::GetProperty(usrpropkey key) const {
    const std::wstring* value = m_properties.get(key);
    if (!value) throw QVE_RangeError(status::Column_GetProperty, "Column::GetProperty");
    return *value;
}

uint64_t Column::GetSizeProperty(usrpropkey key) const {
    return m_properties.number(key, 0);
}

void Column::SetProperty(usrpropkey key, const std::wstring& value) {
    m_properties.set(key, value);
    if (DenotesType(key)) ResolveType();
    UpdateHints();
}

void Column::ClearProperty(usrpropkey key) {
    if (m_properties.erase(key) == 0) return;
    if (DenotesType(key)) ResolveType();
    UpdateHints();
}

const std::wstring& Column::GetName() const {
    static const std::wstring unnamed;
    const std::wstring* name = m_properties.get(usrpropkey::name);
    return name ? *name : unnamed;
}

void Column::ResolveType() {
    // A set that is still being filled denotes no type yet; who asks for one then is told so.
    m_type = m_properties.has(usrpropkey::factory) ? usrtype::resolve(m_properties) : nullptr;
}

const usrtype* Column::GetType() const {
    return m_type ? m_type : usrtype::resolve(m_properties);
}

void Column::SetType(const usrtype* type) {
    if (m_type) {
        for (const auto& property : m_type->properties()) m_properties.erase(property.first);
    }
    m_properties += type->properties();
    if (!m_properties.has(usrpropkey::compression)) m_properties.erase(usrpropkey::storagewidth);
    m_type = type;
    UpdateHints();
    MakeHeap();
}

std::wstring Column::GetPrimitiveType(usrpropkey key) const {
    if (!m_compressed) return m_type ? m_type->name() : std::wstring(m_properties.text(usrpropkey::type));
    // The empty key is in no set: an operation that may not run on tokens works on values.
    if (!m_properties.has(key)) return L"usr" + std::to_wstring(m_tokenSize);
    switch (m_tokenSize) {
        case 1:
            return L"uchr";
        case 2:
            return L"usht";
        case 4:
            return L"ulng";
        default:
            return L"oid";
    }
}

void Column::UpdateHints() {
    m_compressed = m_properties.has(usrpropkey::compression);
    m_dataType = usrtype::DecodeDataType(m_properties.text(usrpropkey::datatype, L"usr"));
    m_default.reset();
    m_storage = m_properties.text(usrpropkey::storagetype, storageCol);
    m_flags = 0;
    if (m_properties.has(usrpropkey::not_null)) m_flags |= column_flags::not_null;
    if (m_storage == storageVal) m_flags |= column_flags::constant;

    const uint64_t size = m_properties.number(usrpropkey::size, 0);
    m_entrySize = static_cast<uint32_t>(std::min<uint64_t>(size, 0xFFFFFFFFu));
    uint64_t width = m_properties.number(usrpropkey::storagewidth, size);
    // The size of a heap type bounds its heap; it is no width of a token.
    if (m_compressed && !IsTokenWidth(width)) width = 8;
    m_tokenSize = static_cast<uint32_t>(std::clamp<uint64_t>(width, 1, 0xFFFF));
    m_shift = std::has_single_bit(m_tokenSize) ? static_cast<uint32_t>(std::countr_zero(m_tokenSize)) : 64;
}

const usratom& Column::GetDefaultAtom() const {
    if (!m_default) {
        const usrtype* const type = GetType();
        usratom atom(type);
        if (const std::wstring* text = m_properties.get(usrpropkey::default_value)) {
            const std::string bytes = narrow(*text);
            if (type->frombuffer(atom, 0, static_cast<unsigned>(bytes.size()), bytes.data())) atom.assign_null(type);
        }
        m_default = std::move(atom);
    }
    return *m_default;
}

// Streams

void Column::MakeHeap() {
    m_heap.reset();
    if (m_dictionary) m_heap = GetType()->heap(m_dictionary.get());
}

void Column::SetEncodingProperty() {
    if (m_data && EncodingFactory::GetEncodingStream(m_data.get())) {
        m_properties.set(usrpropkey::encoding, EncodingFactory::GetEncodingType(m_data.get()));
    } else {
        m_properties.erase(usrpropkey::encoding);
    }
}

RefCntPtr<DataStream> Column::SetData(RefCntPtr<DataStream> data) {
    m_data.swap(data);
    m_row = m_data ? Rows(m_data->GetCursor()) : 0;
    SetEncodingProperty();
    return data;
}

RefCntPtr<DataStream> Column::SetDict(RefCntPtr<DataStream> dictionary) {
    m_heap.reset();
    m_dictionary.swap(dictionary);
    MakeHeap();
    return dictionary;
}

void Column::ShareStreams(const Column& other) {
    if (m_data != other.m_data) {
        m_data = other.m_data;
        if (const std::wstring* encoding = other.m_properties.get(usrpropkey::encoding)) {
            m_properties.set(usrpropkey::encoding, *encoding);
        } else {
            m_properties.erase(usrpropkey::encoding);
        }
    }
    m_row = other.m_row;
    if (m_dictionary != other.m_dictionary) SetDict(other.m_dictionary);
}

RefCntPtr<Column> Column::Fork(bool readOnly) const {
    return MakeRef<Column>(m_properties, m_data ? m_data->Fork(readOnly) : nullptr,
                           m_dictionary ? m_dictionary->Fork(readOnly) : nullptr);
}

input_column Column::GetDictionaryInput(unsigned offset) const {
    input_column view;
    view.width = std::max(m_entrySize, 1u);
    view.data = m_dictionary->GetInput(view.width * offset);
    view.count = Clamp(m_dictionary->GetLimit() / view.width - offset);
    return view;
}

uint64_t Column::Extend(uint64_t count) {
    m_data->Extend(Bytes(count));
    m_row = Rows(m_data->GetCursor());
    return GetLimit();
}

// Views of the parts

RefCntPtr<Column> Column::GetDataColumn() const {
    if (!m_compressed || !IsTokenWidth(m_tokenSize)) {
        throw QVE_LogicError(status::Column_GetDataColumn, "Column::GetDataColumn");
    }
    usrprops properties = builtin::primitive_props(GetPrimitiveType(usrpropkey::compression));
    for (const usrpropkey key :
         {usrpropkey::name, usrpropkey::not_null, usrpropkey::storagetype, usrpropkey::ordinal}) {
        if (const std::wstring* value = m_properties.get(key)) properties.set(key, *value);
    }
    return MakeRef<Column>(std::move(properties), m_data);
}

RefCntPtr<Column> Column::GetDictionaryColumn() const {
    if (!m_compressed) {
        throw QVE_LogicError(status::Column_GetDictionaryColumn_plain, "Column::GetDictionaryColumn: Not compressed.");
    }
    if (m_properties.text(usrpropkey::compression) != L"array") {
        throw QVE_LogicError(status::Column_GetDictionaryColumn_heap,
                             "Column::GetDictionaryColumn: Not array compressed.");
    }
    usrprops properties = GetType()->properties();
    properties.set(usrpropkey::name, GetName() + nameDict);
    properties.set(usrpropkey::not_null, true);
    RefCntPtr<DataStream> entries;
    if (m_dictionary) {
        entries = MakeRef<ReadOnlyDataStream>(MakeRef<DictionaryEntriesDataStream>(m_dictionary, m_entrySize));
    }
    return MakeRef<Column>(std::move(properties), std::move(entries));
}

}  // namespace qve
