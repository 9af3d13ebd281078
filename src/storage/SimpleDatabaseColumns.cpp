// The columns of a SimpleDatabase.

#include <algorithm>

#include "metrics/Scope.h"
#include "os/Path.h"
#include "storage/CatalogFiles.h"
#include "storage/DirectoryTableSpace.h"
#include "storage/EncodingFactory.h"
#include "storage/MaterialisedTableSpace.h"
#include "storage/PropertyFile.h"
#include "storage/SimpleDatabaseImpl.h"
#include "storage/SpaceListing.h"
#include "storage/status.h"
#include "storage/stream/FileDataStream.h"
#include "system/QuillonException.h"
#include "system/unicode.h"
#include "telemetry/LogScopeTime.h"
#include "types/complete_type.h"

namespace qve {

namespace {

[[noreturn]] void NoSuchColumn(const std::wstring& column) {
    throw QVE_RuntimeError(status::SimpleDatabase_SelectColumnProperties,
                           "SimpleDatabase::SelectColumnProperties: no such column " + narrow(column));
}

/// What every stored column has: the whole of its type, and for text a dictionary, since a cell has a fixed width.
void CompleteProperties(usrprops& properties) {
    if (!properties.has(usrpropkey::factory)) properties += complete_type(properties);
    const usrtype* const type = usrtype::resolve(properties);
    if (type->fixed() || properties.has(usrpropkey::compression)) return;
    properties.set(usrpropkey::compression, L"heap");
    if (!properties.has(usrpropkey::storagewidth)) properties.set(usrpropkey::storagewidth, L"8");
}

}  // namespace

void SimpleDatabase::Impl::RefuseSystemSchema(const std::wstring& schema) const {
    if (schema != systemSchema) return;
    throw QVE_LogicError(status::SimpleDatabase_system, "SimpleDatabase: the schema \"SYS\" belongs to the system");
}

std::vector<std::wstring> SimpleDatabase::GetColumnNames(const std::wstring& table, const std::wstring& schema) const {
    std::lock_guard guard(m_impl->mutex);
    if (schema == systemSchema) {
        for (const SystemTable& known : SystemTables()) {
            if (known.name == table) return known.columns;
        }
    }
    const auto catalog = m_impl->CatalogOf(schema);
    const Impl::Place place = m_impl->FindTable(catalog.get(), table, schema);
    if (catalog) return catalog->columns.SelectNames(place.id);
    std::vector<std::wstring> names;
    for (SpaceListing::Column& column : SpaceListing::Columns(*place.area->space, place.directory)) {
        names.push_back(std::move(column.name));
    }
    return names;
}

usrprops SimpleDatabase::Impl::SelectColumnProperties(const Catalog* catalog, const Place& place,
                                                      const std::wstring& column) const {
    if (catalog) {
        if (!catalog->columns.HasName(place.id, column)) NoSuchColumn(column);
        usrprops found = catalog->columns.SelectProperties(catalog->columns.SelectMetadataName(place.id, column));
        found.set(usrpropkey::name, column);
        return found;
    }
    for (SpaceListing::Column& listed : SpaceListing::Columns(*place.area->space, place.directory)) {
        if (listed.name == column) return std::move(listed.properties);
    }
    NoSuchColumn(column);
}

usrprops SimpleDatabase::DescribeColumn(const std::wstring& column, const std::wstring& table,
                                        const std::wstring& schema) const {
    std::lock_guard guard(m_impl->mutex);
    if (schema == systemSchema) {
        const std::vector<std::wstring> columns = GetColumnNames(table, schema);
        if (std::find(columns.begin(), columns.end(), column) == columns.end()) NoSuchColumn(column);
        m_impl->RequireDatabase();
        return ReadPropertyFile(*m_impl->root.space, SystemColumnPath(table, column, extTypeFile));
    }
    const auto catalog = m_impl->CatalogOf(schema);
    return m_impl->SelectColumnProperties(catalog.get(), m_impl->FindTable(catalog.get(), table, schema), column);
}

RefCntPtr<DataStream> SimpleDatabase::OpenStream(TableSpace& space, const std::wstring& path, bool writable) {
    std::lock_guard guard(m_impl->mutex);
    RefCntPtr<DataStream> stream = space.open(path, writable);
    // A space in memory hands out the one stream of a file; each reader needs a window of its own.
    if (!writable && stream->GetRefCount() > 1) stream = stream->Fork(true);
    // A view makes its tables anew for each reader.
    if (dynamic_cast<MaterialisedTableSpace*>(&space)) return stream;
    const auto [known, fresh] = m_impl->guids.try_emplace({&space, path}, stream->GetGuid());
    if (!fresh) stream->SetGuid(known->second);
    return stream;
}

RefCntPtr<Column> SimpleDatabase::OpenColumn(const std::wstring& column, const std::wstring& table,
                                             const std::wstring& schema, bool writable) {
    std::lock_guard guard(m_impl->mutex);
    usrprops properties = DescribeColumn(column, table, schema);
    Impl::Place place{&m_impl->root, systemSchema};
    if (schema != systemSchema) place = m_impl->FindTable(m_impl->CatalogOf(schema).get(), table, schema);
    TableSpace& space = *place.area->space;
    RefCntPtr<DataStream> data =
        OpenStream(space, m_impl->ColumnFile(place, properties, usrpropkey::data_file), writable);
    const std::wstring encoding(properties.text(usrpropkey::encoding));
    if (!encoding.empty()) data = EncodingFactory::CreateEncodingStream(std::move(data), encoding);
    RefCntPtr<DataStream> dictionary;
    if (properties.has(usrpropkey::compression)) {
        if (!properties.has(usrpropkey::dict_file)) {
            throw QVE_RuntimeError(status::SimpleDatabase_OpenColumn,
                                   "SimpleDatabase::OpenColumn: column " + narrow(column) + " has no dictionary");
        }
        dictionary = OpenStream(space, m_impl->ColumnFile(place, properties, usrpropkey::dict_file), writable);
    }
    auto opened = MakeRef<Column>(std::move(properties), std::move(data), std::move(dictionary));
    opened->GetType();  // a column that denotes no type is refused here, not in the middle of a query
    return opened;
}

RefCntPtr<Column> SimpleDatabase::LoadColumn(const std::wstring& column, const std::wstring& table,
                                             const std::wstring& schema) {
    Metrics::Scope scope("SimpleDatabase::LoadColumn");
    std::lock_guard guard(m_impl->mutex);
    const auto before = m_impl->generation;
    try {
        return OpenColumn(column, table, schema);
    } catch (const QVE_RuntimeError&) {
        // Another writer may be replacing the file; once its commit is through, the catalog names the new one.
        if (m_impl->OwnsTransaction() || !m_impl->lock.IsOpen()) throw;
        m_impl->Load();
        if (m_impl->generation == before) throw;
        return OpenColumn(column, table, schema);
    }
}

RefCntPtr<Column> SimpleDatabase::OpenSystemColumn(const std::wstring& table, const std::wstring& column) {
    return OpenColumn(column, table, systemSchema);
}

std::vector<std::wstring> SimpleDatabase::GetColumnFiles(const std::wstring& table, const std::wstring& schema) const {
    std::lock_guard guard(m_impl->mutex);
    const std::vector<std::wstring> tables = GetTableNames(schema);
    if (std::find(tables.begin(), tables.end(), table) == tables.end()) {
        throw QVE_RuntimeError(status::SimpleDatabase_GetColumnFiles,
                               "SimpleDatabase::GetColumnFiles: no such table: " + narrow(table));
    }
    Impl::Place place{&m_impl->root, systemSchema};
    if (schema != systemSchema) place = m_impl->FindTable(m_impl->CatalogOf(schema).get(), table, schema);
    std::vector<std::wstring> files;
    for (const std::wstring& column : GetColumnNames(table, schema)) {
        const usrprops properties = DescribeColumn(column, table, schema);
        for (const usrpropkey key : {usrpropkey::data_file, usrpropkey::dict_file, usrpropkey::type_file}) {
            if (properties.has(key)) files.push_back(m_impl->ColumnFile(place, properties, key));
        }
    }
    return files;
}

void SimpleDatabase::CreateColumn(const std::wstring& column, const std::wstring& table, const std::wstring& schema,
                                  const usrprops& properties) {
    Metrics::Scope scope("SimpleDatabase::CreateColumn");
    if (column.empty() || column.front() == L'.') {
        throw QVE_LogicError(status::SimpleDatabase_CreateColumn,
                             "SimpleDatabase::CreateColumn:  Invalid column name: [" + narrow(column) + "]");
    }
    m_impl->RefuseSystemSchema(schema);
    Transaction transaction(*this);
    {
        std::lock_guard guard(m_impl->mutex);
        const Impl::Place place = m_impl->FindTable(m_impl->CatalogOf(schema).get(), table, schema);
        const std::vector<std::wstring> columns = GetColumnNames(table, schema);
        if (std::find(columns.begin(), columns.end(), column) != columns.end()) {
            throw QVE_RuntimeError(status::SimpleDatabase_CreateColumn_exists,
                                   "SimpleDatabase::CreateColumn: column exists: " + narrow(column));
        }
        usrprops stored = properties;
        CompleteProperties(stored);
        stored.set(usrpropkey::name, column);
        if (!stored.has(usrpropkey::ordinal)) stored.set(usrpropkey::ordinal, columns.size());
        stored.erase(usrpropkey::encoding);
        Impl::Area& area = *place.area;
        stored.set(usrpropkey::data_file, m_impl->AllocateColumnFile(area, extDataFile, column, place.directory));
        stored.erase(usrpropkey::dict_file);
        if (stored.has(usrpropkey::compression)) {
            stored.set(usrpropkey::dict_file, m_impl->AllocateColumnFile(area, extDictFile, column, place.directory));
            const std::wstring dictionary = m_impl->ColumnFile(place, stored, usrpropkey::dict_file);
            // A dictionary begins with its null, which only a writer can put there.
            usrtype::resolve(stored)->heap(area.space->open(dictionary, true).get());
            area.space->close(dictionary);
        }
        stored.set(usrpropkey::type_file, m_impl->AllocateColumnFile(area, extTypeFile, column, place.directory));
        m_impl->InsertColumn(place, column, stored);
    }
    transaction.Commit();
}

void SimpleDatabase::Impl::InsertColumn(const Place& place, const std::wstring& column, const usrprops& stored) {
    if (!stored.has(usrpropkey::type_file)) {
        throw QVE_RuntimeError(status::SimpleDatabase_InsertColumn, "SimpleDatabase::InsertColumn: No type file name");
    }
    if (place.id != MetadataTable::noParent) Work().columns.InsertMetadata(place.id, column, stored);
    WritePropertyFile(*place.area->space, ColumnFile(place, stored, usrpropkey::type_file), stored);
    const usrprops& current = transaction->properties ? *transaction->properties : properties;
    if (stored.text(usrpropkey::datatype) == L"spatial" &&
        current.number(usrpropkey::version_major, 0) < versionMajorSpatial) {
        usrprops raised = current;
        raised.set(usrpropkey::version_major, versionMajorSpatial);
        transaction->properties = std::move(raised);
    }
}

std::optional<std::wstring> SimpleDatabase::ReplaceFile(const std::wstring& column, const std::wstring& table,
                                                        const std::wstring& schema, usrpropkey key,
                                                        const RefCntPtr<DataStream>& source) {
    const RefCntPtr<DataStream> storage = EncodingFactory::GetStorageStream(source);
    std::wstring path;
    std::wstring name;
    RefCntPtr<TableSpace> space;
    {
        std::lock_guard guard(m_impl->mutex);
        const usrprops present = DescribeColumn(column, table, schema);
        const Impl::Place place = m_impl->FindTable(m_impl->CatalogOf(schema).get(), table, schema);
        space = place.area->space;
        if (present.has(key)) {
            const auto known = m_impl->guids.find({space.get(), m_impl->ColumnFile(place, present, key)});
            if (known != m_impl->guids.end() && known->second == storage->GetGuid()) return std::nullopt;
        }
        name = m_impl->AllocateColumnFile(*place.area, key == usrpropkey::data_file ? extDataFile : extDictFile, column,
                                          place.directory);
        path = Path::join(place.directory, name);
    }
    // The bytes are moved without the lock, so that others go on reading meanwhile.
    const auto file = DynamicPtrCast<FileDataStream>(storage);
    const uint64_t size = storage->GetSize();
    if (file && file->GetFile()->IsTemporary() && dynamic_cast<DirectoryTableSpace*>(space.get())) {
        Metrics::Scope scope("SimpleDatabase::RenameStream");
        file->Rename(Path::join(space->root(), path));
        std::lock_guard guard(m_impl->mutex);
        TrimFile(*space, path, size);
    } else {
        RefCntPtr<DataStream> copy;
        {
            std::lock_guard guard(m_impl->mutex);
            copy = space->open(path, true);
        }
        const uint64_t cursor = storage->GetCursor(), limit = storage->GetLimit();
        DataStream::CopyData(*copy, *storage);
        storage->Seek(cursor, limit);
        copy.reset();
        std::lock_guard guard(m_impl->mutex);
        space->close(path);
    }
    std::lock_guard guard(m_impl->mutex);
    m_impl->guids.insert_or_assign({space.get(), path}, storage->GetGuid());
    return name;
}

void SimpleDatabase::ReplaceColumn(const std::wstring& column, const std::wstring& table, const std::wstring& schema,
                                   Column& source) {
    Metrics::Scope scope("SimpleDatabase::ReplaceColumn");
    LogScopeTime time("SimpleDatabase::ReplaceColumn");
    m_impl->RefuseSystemSchema(schema);
    Transaction transaction(*this);
    const usrprops present = DescribeColumn(column, table, schema);
    usrprops stored = source.GetProperties();
    stored.set(usrpropkey::name, column);
    for (const usrpropkey key :
         {usrpropkey::type_file, usrpropkey::data_file, usrpropkey::dict_file, usrpropkey::ordinal}) {
        if (const std::wstring* kept = present.get(key)) {
            stored.set(key, *kept);
        } else if (key != usrpropkey::ordinal) {
            stored.erase(key);
        }
    }
    // The storage class tells how a page in flight is held; a stored column has a cell for each row.
    stored.erase(usrpropkey::storagetype);
    if (!source.GetData() || (source.IsCompressed() && !source.GetDict())) {
        throw QVE_InvalidArgument(status::SimpleDatabase_ReplaceColumn,
                                  "SimpleDatabase::ReplaceColumn: column " + narrow(column) + " holds no data");
    }
    std::vector<std::wstring> replaced;
    const auto replace = [&](usrpropkey key, const RefCntPtr<DataStream>& stream) {
        const auto name = ReplaceFile(column, table, schema, key, stream);
        if (!name) return;
        if (const std::wstring* old = present.get(key)) replaced.push_back(*old);
        stored.set(key, *name);
    };
    replace(usrpropkey::data_file, source.GetData());
    if (source.IsCompressed()) {
        replace(usrpropkey::dict_file, source.GetDict());
    } else if (const std::wstring* old = present.get(usrpropkey::dict_file)) {
        replaced.push_back(*old);
        stored.erase(usrpropkey::dict_file);
    }
    {
        std::lock_guard guard(m_impl->mutex);
        const Impl::Place place = m_impl->FindTable(m_impl->CatalogOf(schema).get(), table, schema);
        if (place.id != MetadataTable::noParent) {
            Catalog& catalog = m_impl->Work();
            catalog.columns.UpdateMetadata(catalog.columns.SelectMetadataName(place.id, column), stored);
        }
        m_impl->UpdateTypeFile(place, stored);
        for (const std::wstring& old : replaced) {
            place.area->changes.unlinks.push_back(Path::join(place.directory, old));
        }
    }
    transaction.Commit();
}

void SimpleDatabase::DropColumn(const std::wstring& column, const std::wstring& table, const std::wstring& schema, bool,
                                bool ifexists) {
    Metrics::Scope scope("SimpleDatabase::DropColumn");
    m_impl->RefuseSystemSchema(schema);
    Transaction transaction(*this);
    {
        std::lock_guard guard(m_impl->mutex);
        const std::vector<std::wstring> columns = GetColumnNames(table, schema);
        if (std::find(columns.begin(), columns.end(), column) == columns.end()) {
            if (!ifexists) NoSuchColumn(column);
            return transaction.Commit();
        }
        const usrprops present = DescribeColumn(column, table, schema);
        const Impl::Place place = m_impl->FindTable(m_impl->CatalogOf(schema).get(), table, schema);
        for (const usrpropkey key : {usrpropkey::data_file, usrpropkey::dict_file, usrpropkey::type_file}) {
            if (present.has(key)) place.area->changes.unlinks.push_back(m_impl->ColumnFile(place, present, key));
        }
        if (place.id != MetadataTable::noParent) {
            Catalog& catalog = m_impl->Work();
            catalog.columns.DeleteMetadata(catalog.columns.SelectMetadataName(place.id, column));
        }
    }
    transaction.Commit();
}

}  // namespace qve
