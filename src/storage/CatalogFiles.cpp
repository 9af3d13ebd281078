#include "storage/CatalogFiles.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <unordered_map>

#include "storage/PropertyFile.h"
#include "storage/SimpleDatabase.h"
#include "storage/status.h"
#include "storage/stream/FileDataStream.h"
#include "system/QuillonException.h"
#include "system/unicode.h"
#include "telemetry/LogEntry.h"
#include "types/builtin.h"
#include "types/varchar.h"

namespace qve {

namespace {

using Renames = std::vector<std::pair<std::wstring, std::wstring>>;

const usrtype* TextType() {
    return varchar::usrtypeof(Database::metadataPrecision, Database::metadataScale, Database::metadataCollate.c_str());
}

[[noreturn]] void Damaged(const std::wstring& table, const char* what) {
    throw QVE_RuntimeError(status::SimpleDatabase_LoadCatalog, "SimpleDatabase::LoadCatalog: the catalog table \"" +
                                                                   narrow(table) + "\" is damaged: " + what);
}

/// Writes new versions of system columns, each beside the file that it replaces.
class Writer {
public:
    /// @param journal null when the files take no other's place
    Writer(TableSpace& space, CatalogJournal* journal, std::wstring suffix)
        : m_space(space), m_journal(journal), m_suffix(std::move(suffix)) {}

    void Numbers(const std::wstring& table, const std::wstring& column, const std::vector<uint64_t>& values) {
        Store(SimpleDatabase::SystemColumnPath(table, column, SimpleDatabase::extDataFile), values.data(),
              values.size() * sizeof values[0]);
    }
    void Flags(const std::wstring& table, const std::vector<char>& values) {
        Store(SimpleDatabase::SystemColumnPath(table, Database::columnActive, SimpleDatabase::extDataFile),
              values.data(), values.size());
    }
    void Texts(const std::wstring& table, const std::wstring& column, const std::vector<const std::wstring*>& values);

    Renames Finish() { return std::move(m_renames); }

private:
    std::wstring Begin(const std::wstring& path) {
        const std::wstring file = path + m_suffix;
        if (m_space.exists(file)) m_space.unlink(file);
        if (m_journal) m_journal->AboutToCreate(file);
        m_space.create(file);
        if (m_journal) m_renames.emplace_back(file, path);
        return file;
    }
    void Store(const std::wstring& path, const void* bytes, uint64_t count) {
        const std::wstring file = Begin(path);
        m_space.open(file, true)->Append(bytes, count);
        m_space.close(file);
    }

    TableSpace& m_space;
    CatalogJournal* const m_journal;
    const std::wstring m_suffix;
    Renames m_renames;
};

// Entries go into the heap in the order of their values, so that tokens compare as the texts do.
void Writer::Texts(const std::wstring& table, const std::wstring& column,
                   const std::vector<const std::wstring*>& values) {
    const usrtype* const type = TextType();
    std::unordered_map<std::wstring_view, uint64_t> tokens;
    for (const std::wstring* value : values) tokens.emplace(*value, 0);

    std::vector<std::pair<usratom, uint64_t*>> sorted;
    sorted.reserve(tokens.size());
    for (auto& [text, token] : tokens) {
        const std::u16string units = to_utf16(text);
        if (units.size() * sizeof units[0] > 0xFFFE) {
            throw QVE_RuntimeError(status::SimpleDatabase_InsertMetadata,
                                   "SimpleDatabase::InsertMetadata: text too long for the catalog");
        }
        sorted.emplace_back(usratom(type, reinterpret_cast<const char*>(units.data()), units.size() * sizeof units[0]),
                            &token);
    }
    std::sort(sorted.begin(), sorted.end(),
              [type](const auto& a, const auto& b) { return type->compare(a.first, b.first) < 0; });

    const std::wstring file = Begin(SimpleDatabase::SystemColumnPath(table, column, SimpleDatabase::extDictFile));
    {
        const RefCntPtr<DataStream> stream = m_space.open(file, true);
        const auto heap = type->heap(stream.get());
        for (const auto& [atom, token] : sorted) *token = heap->put(atom);
        stream->SetAccelerator(nullptr);
    }
    m_space.close(file);

    std::vector<uint64_t> cells;
    cells.reserve(values.size());
    for (const std::wstring* value : values) cells.push_back(tokens.find(*value)->second);
    Numbers(table, column, cells);
}

void WriteEntries(Writer& writer, const MetadataTable& metadata, const SystemTable& table) {
    std::vector<uint64_t> ids, parents;
    std::vector<const std::wstring*> names;
    std::vector<char> active;
    for (const MetadataTable::Entry& entry : metadata.GetEntries()) {
        ids.push_back(entry.id);
        parents.push_back(entry.parent);
        names.push_back(&entry.name);
        active.push_back(entry.active);
    }
    writer.Numbers(table.name, Database::columnID, ids);
    if (table.columns[1] == Database::columnParent) writer.Numbers(table.name, Database::columnParent, parents);
    writer.Texts(table.name, Database::columnName, names);
    writer.Flags(table.name, active);
}

void WriteProperties(Writer& writer, const MetadataTable& metadata, const SystemTable& table) {
    std::vector<uint64_t> ids, parents;
    std::vector<const std::wstring*> keys, values;
    std::vector<char> active;
    for (const MetadataTable::Property& property : metadata.GetProperties()) {
        ids.push_back(property.id);
        parents.push_back(property.parent);
        keys.push_back(&UsrPropKey_ToString(property.key));
        values.push_back(&property.value);
        active.push_back(property.active);
    }
    writer.Numbers(table.name, Database::columnID, ids);
    writer.Numbers(table.name, Database::columnParent, parents);
    writer.Texts(table.name, Database::columnKey, keys);
    writer.Texts(table.name, Database::columnValue, values);
    writer.Flags(table.name, active);
}

/// Reads the columns of one system table. Rows that some column lacks were never complete: they are left out.
class Reader {
public:
    /// Clears `whole` when rows are left out.
    Reader(TableSpace& space, const SystemTable& table, bool& whole);

    std::vector<uint64_t> Numbers(const std::wstring& name) { return Cells<uint64_t>(*Open(name)); }
    std::vector<unsigned char> Flags() { return Cells<unsigned char>(*Open(Database::columnActive)); }
    std::vector<std::wstring> Texts(const std::wstring& name);

private:
    const RefCntPtr<Column>& Open(const std::wstring& name) const { return m_columns.at(name); }
    template <class T>
    std::vector<T> Cells(Column& column);

    const std::wstring& m_table;
    std::map<std::wstring, RefCntPtr<Column>> m_columns;
    uint64_t m_rows = ~uint64_t{0};
};

Reader::Reader(TableSpace& space, const SystemTable& table, bool& whole) : m_table(table.name) {
    uint64_t most = 0;
    for (const std::wstring& name : table.columns) {
        const auto path = [&](const std::wstring& extension) {
            return SimpleDatabase::SystemColumnPath(m_table, name, extension);
        };
        usrprops properties = ReadPropertyFile(space, path(SimpleDatabase::extTypeFile));
        RefCntPtr<DataStream> data = space.open(path(SimpleDatabase::extDataFile), false);
        RefCntPtr<DataStream> dictionary;
        if (properties.has(usrpropkey::compression)) {
            dictionary = space.open(path(SimpleDatabase::extDictFile), false);
        }
        auto column = MakeRef<Column>(std::move(properties), std::move(data), std::move(dictionary));
        m_rows = std::min(m_rows, column->GetCount());
        most = std::max(most, column->GetCount());
        m_columns.emplace(name, std::move(column));
    }
    if (most == m_rows) return;
    whole = false;
    LogEntry() << "ReadCatalog: the columns of the catalog table \"" << m_table << "\" differ in length; of " << most
               << " rows the first " << m_rows << " are whole";
}

template <class T>
std::vector<T> Reader::Cells(Column& column) {
    if (column.GetTokenSize() != sizeof(T)) Damaged(m_table, "a column has the wrong width");
    std::vector<T> cells(m_rows);
    for (uint64_t row = 0; row < m_rows;) {
        const uint64_t count = std::min(column.Seek(row, 1), m_rows - row);
        std::memcpy(cells.data() + row, column.GetInput().data, count * sizeof(T));
        row += count;
    }
    return cells;
}

std::vector<std::wstring> Reader::Texts(const std::wstring& name) {
    const RefCntPtr<Column> column = Open(name);
    if (!column->GetHeap()) Damaged(m_table, "a text column has no dictionary");
    const std::vector<uint64_t> tokens = Cells<uint64_t>(*column);
    const int scale = column->GetType()->scale();
    std::unordered_map<uint64_t, std::wstring> known;
    std::vector<std::wstring> texts;
    texts.reserve(tokens.size());
    for (const uint64_t token : tokens) {
        auto text = known.find(token);
        if (text == known.end()) {
            const usratom& atom = column->GetHeap()->get(token);
            if (atom.isnull()) Damaged(m_table, "a text is missing");
            const std::string_view bytes = atom.bytes();
            std::wstring wide;
            if (scale == 1) {
                wide = widen(bytes);
            } else if (scale == 2) {
                std::u16string units(bytes.size() / 2, u'\0');
                std::memcpy(units.data(), bytes.data(), units.size() * 2);
                wide = widen(units);
            } else {
                Damaged(m_table, "a text column has the wrong type");
            }
            text = known.emplace(token, std::move(wide)).first;
        }
        texts.push_back(text->second);
    }
    return texts;
}

void ReadEntries(TableSpace& space, MetadataTable& metadata, const SystemTable& table, bool& whole) {
    Reader reader(space, table, whole);
    const auto ids = reader.Numbers(Database::columnID);
    const bool hasParent = table.columns[1] == Database::columnParent;
    const auto parents = hasParent ? reader.Numbers(Database::columnParent) : std::vector<uint64_t>();
    auto names = reader.Texts(Database::columnName);
    const auto active = reader.Flags();
    uint64_t last = 0;
    for (size_t row = 0; row < ids.size(); ++row) {
        if (ids[row] <= last || ids[row] == MetadataTable::noParent) Damaged(table.name, "its ids do not ascend");
        last = ids[row];
        metadata.LoadEntry(
            {ids[row], hasParent ? parents[row] : MetadataTable::noParent, std::move(names[row]), active[row] == 1});
    }
}

void ReadProperties(TableSpace& space, MetadataTable& metadata, const SystemTable& table, bool& whole) {
    Reader reader(space, table, whole);
    const auto ids = reader.Numbers(Database::columnID);
    const auto parents = reader.Numbers(Database::columnParent);
    const auto keys = reader.Texts(Database::columnKey);
    auto values = reader.Texts(Database::columnValue);
    const auto active = reader.Flags();
    for (size_t row = 0; row < ids.size(); ++row) {
        metadata.LoadProperty(
            {ids[row], parents[row], UsrPropKey_FromString(keys[row]), std::move(values[row]), active[row] == 1});
    }
}

enum SystemTableIndex { schemas, schemaProps, tables, tableProps, columns, columnProps, dual };

}  // namespace

const std::vector<SystemTable>& SystemTables() {
    using D = Database;
    static const std::vector<SystemTable> all = {
        {D::tableSchemas, {D::columnID, D::columnName, D::columnActive}},
        {D::tableSchemaProps, {D::columnID, D::columnParent, D::columnKey, D::columnValue, D::columnActive}},
        {D::tableTables, {D::columnID, D::columnParent, D::columnName, D::columnActive}},
        {D::tableTableProps, {D::columnID, D::columnParent, D::columnKey, D::columnValue, D::columnActive}},
        {D::tableColumns, {D::columnID, D::columnParent, D::columnName, D::columnActive}},
        {D::tableColumnProps, {D::columnID, D::columnParent, D::columnKey, D::columnValue, D::columnActive}},
        {D::tableDual, {D::columnID}},
    };
    return all;
}

usrprops SystemColumnProperties(const std::wstring& column) {
    usrprops properties;
    if (column == Database::columnID || column == Database::columnParent) {
        properties = builtin::primitive_props(L"oid");
    } else if (column == Database::columnActive) {
        properties = builtin::primitive_props(L"bit");
        properties.set(usrpropkey::default_value, L"t");
    } else {
        properties =
            varchar::propsof(Database::metadataPrecision, Database::metadataScale, Database::metadataCollate.c_str());
        properties.set(usrpropkey::compression, L"heap");
        properties.set(usrpropkey::storagewidth, L"8");
        properties.set(usrpropkey::distinct, true);
        properties.set(usrpropkey::comparable, true);
    }
    properties.set(usrpropkey::not_null, true);
    return properties;
}

void InitialiseSystemSchema(TableSpace& space, Catalog& catalog) {
    space.mkdir(Database::systemSchema);
    const uint64_t schema = catalog.schemas.InsertMetadata(MetadataTable::noParent, Database::systemSchema, {});
    for (const SystemTable& table : SystemTables()) {
        space.mkdir(Database::systemSchema + L"/" + table.name);
        const uint64_t id = catalog.tables.InsertMetadata(schema, table.name, {});
        int ordinal = 0;
        for (const std::wstring& column : table.columns) {
            usrprops properties = SystemColumnProperties(column);
            properties.set(usrpropkey::name, column);
            properties.set(usrpropkey::ordinal, ordinal++);
            const auto file = [&](usrpropkey key, const std::wstring& extension) {
                properties.set(key, Database::NameSystemColumn(table.name, column) + extension);
            };
            file(usrpropkey::data_file, SimpleDatabase::extDataFile);
            file(usrpropkey::type_file, SimpleDatabase::extTypeFile);
            if (properties.has(usrpropkey::compression)) file(usrpropkey::dict_file, SimpleDatabase::extDictFile);
            catalog.columns.InsertMetadata(id, column, properties);
            const std::wstring type = SimpleDatabase::SystemColumnPath(table.name, column, SimpleDatabase::extTypeFile);
            space.create(type);
            WritePropertyFile(space, type, properties);
        }
    }
    Writer writer(space, nullptr, L"");
    writer.Numbers(Database::tableDual, Database::columnID, {1});
    WriteEntries(writer, catalog.schemas, SystemTables()[schemas]);
    WriteProperties(writer, catalog.schemas, SystemTables()[schemaProps]);
    WriteEntries(writer, catalog.tables, SystemTables()[tables]);
    WriteProperties(writer, catalog.tables, SystemTables()[tableProps]);
    WriteEntries(writer, catalog.columns, SystemTables()[columns]);
    WriteProperties(writer, catalog.columns, SystemTables()[columnProps]);
}

Catalog ReadCatalog(TableSpace& space) {
    Catalog catalog;
    ReadEntries(space, catalog.schemas, SystemTables()[schemas], catalog.whole);
    ReadProperties(space, catalog.schemas, SystemTables()[schemaProps], catalog.whole);
    ReadEntries(space, catalog.tables, SystemTables()[tables], catalog.whole);
    ReadProperties(space, catalog.tables, SystemTables()[tableProps], catalog.whole);
    ReadEntries(space, catalog.columns, SystemTables()[columns], catalog.whole);
    ReadProperties(space, catalog.columns, SystemTables()[columnProps], catalog.whole);
    return catalog;
}

Renames WriteCatalog(TableSpace& space, CatalogJournal& journal, const Catalog& catalog, const std::wstring& suffix) {
    Writer writer(space, &journal, suffix);
    const auto write = [&](const MetadataTable& metadata, int entries, int properties) {
        if (metadata.EntriesChanged()) WriteEntries(writer, metadata, SystemTables()[entries]);
        if (metadata.PropertiesChanged()) WriteProperties(writer, metadata, SystemTables()[properties]);
    };
    write(catalog.schemas, schemas, schemaProps);
    write(catalog.tables, tables, tableProps);
    write(catalog.columns, columns, columnProps);
    return writer.Finish();
}

void TrimFile(TableSpace& space, const std::wstring& path, uint64_t size) {
    {
        const RefCntPtr<DataStream> stream = space.open(path, true);
        if (const auto file = DynamicPtrCast<FileDataStream>(stream)) file->GetFile()->Resize(size);
    }
    space.close(path);
}

}  // namespace qve
