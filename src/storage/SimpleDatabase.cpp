#include "storage/SimpleDatabase.h"

#include <algorithm>

#include "metrics/Scope.h"
#include "os/OS.h"
#include "os/Path.h"
#include "os/WorkFolder.h"
#include "storage/CatalogFiles.h"
#include "storage/DatabaseSchema.h"
#include "storage/DirectoryTableSpace.h"
#include "storage/MemoryDirectoryTableSpace.h"
#include "storage/PkgTableSpace.h"
#include "storage/PropertyFile.h"
#include "storage/SimpleDatabaseImpl.h"
#include "storage/SpaceListing.h"
#include "storage/WritableTableSpace.h"
#include "storage/status.h"
#include "system/QuillonException.h"
#include "system/unicode.h"
#include "telemetry/Logger.h"

namespace qve {

const std::wstring SimpleDatabase::extDataFile = L".data";
const std::wstring SimpleDatabase::extDictFile = L".dict";
const std::wstring SimpleDatabase::extTypeFile = L".type";
const std::wstring SimpleDatabase::extTempFile = L".temp";
const std::wstring SimpleDatabase::databaseTypeFile = L".database.type";

namespace {

RefCntPtr<TableSpace> OpenRoot(const std::wstring& path) {
    // A package is read as it lies; what is written goes with the object.
    if (Path::isfile(path)) return MakeRef<WritableTableSpace>(MakeRef<PkgTableSpace>(path));
    if (MemoryDirectoryTableSpace::s_useMemoryDirectoryTableSpace) return MakeRef<MemoryDirectoryTableSpace>(path);
    return MakeRef<DirectoryTableSpace>(path);
}

RefCntPtr<TableSpace> MakeTemporarySpace() {
    if (MemoryDirectoryTableSpace::s_useMemoryDirectoryTableSpace) return MakeRef<MemoryDirectoryTableSpace>();
    return MakeRef<DirectoryTableSpace>();
}

/// Names with a leading point are the system's own.
bool IsUserName(const std::wstring& name) {
    return !name.empty() && name.front() != L'.';
}

void RequireUserName(const char* operation, const std::wstring& name) {
    if (IsUserName(name)) return;
    throw QVE_LogicError(status::SimpleDatabase_CreateTable_name,
                         std::string(operation) + ": Invalid name: [" + narrow(name) + "]");
}

}  // namespace

SimpleDatabase::SimpleDatabase(const std::wstring& path) : SimpleDatabase(OpenRoot(path)) {
    m_path = path;
}

SimpleDatabase::SimpleDatabase(RefCntPtr<TableSpace> root) {
    const bool durable = dynamic_cast<DirectoryTableSpace*>(root.get()) != nullptr;
    m_impl = std::make_unique<Impl>(std::move(root), durable);
    TableSpace& space = *m_impl->root.space;
    if (space.isfile(databaseTypeFile)) {
        m_impl->properties = ReadPropertyFile(space, databaseTypeFile);
    } else {
        m_impl->properties.set(usrpropkey::version_major, versionMajor);
        m_impl->properties.set(usrpropkey::version_minor, versionMinor);
        m_impl->properties.set(usrpropkey::version_fix, versionFix);
    }
    if (m_impl->properties.number(usrpropkey::version_major, 0) > versionMajorSpatial) {
        throw QVE_RangeError(status::SimpleDatabase_version, narrow(GetMajorVersion()));
    }
    m_impl->areas.emplace(tempSchema, std::make_unique<Impl::Area>(MakeTemporarySpace(), false));
    // What a killed writer left is put in order now, when nobody else is at it; otherwise by that writer's successor.
    if (durable && space.isdir(systemSchema)) {
        m_impl->OpenLock(true);
        if (m_impl->lock.IsWritable() && m_impl->lock.TryLock(Impl::writerSlot, true)) {
            try {
                m_impl->Recover();
            } catch (...) {
                m_impl->lock.Unlock(Impl::writerSlot);
                throw;
            }
            m_impl->lock.Unlock(Impl::writerSlot);
        }
    }
}

SimpleDatabase::~SimpleDatabase() {
    try {
        TableSpace& temporary = *m_impl->GetArea(tempSchema).space;
        temporary.closeall();
        temporary.rmdir(L"");
    } catch (const std::exception& fault) {
        Logger::Get()->QueueMessage(std::string("SimpleDatabase::~SimpleDatabase: ") + fault.what());
    }
}

std::wstring SimpleDatabase::GetMajorVersion() const {
    std::lock_guard guard(m_impl->mutex);
    return std::wstring(m_impl->properties.text(usrpropkey::version_major));
}

const std::wstring& SimpleDatabase::GetRoot() const {
    std::lock_guard guard(m_impl->mutex);
    return m_impl->root.space->root();
}

const std::wstring& SimpleDatabase::GetTempRoot() const {
    std::lock_guard guard(m_impl->mutex);
    return m_impl->GetArea(tempSchema).space->root();
}

usrprops SimpleDatabase::GetProperties() const {
    std::lock_guard guard(m_impl->mutex);
    return m_impl->properties;
}

void SimpleDatabase::CreateDatabase() {
    Metrics::Scope scope("SimpleDatabase::CreateDatabase");
    std::lock_guard guard(m_impl->mutex);
    TableSpace& space = *m_impl->root.space;
    // A space in memory always has its root; what counts there is whether it was filled.
    const bool taken = m_impl->durable ? space.exists(L"") : space.exists(databaseTypeFile);
    if (taken) throw QVE_RuntimeError(status::SimpleDatabase_CreateDatabase, "SimpleDatabase::CreateDatabase");
    if (!space.exists(L"")) space.mkdir(L"");
    try {
        space.create(databaseTypeFile);
        WritePropertyFile(space, databaseTypeFile, m_impl->properties);
        Catalog catalog;
        InitialiseSystemSchema(space, catalog);
        space.closeall();
        m_impl->OpenLock(true);
    } catch (...) {
        space.rmdir(L"");
        throw;
    }
    InvalidateCache();
}

void SimpleDatabase::DropDatabase(bool cascade) {
    Metrics::Scope scope("SimpleDatabase::DropDatabase");
    TableSpace& space = *m_impl->root.space;
    {
        std::lock_guard guard(m_impl->mutex);
        if (!space.exists(L"")) {
            throw QVE_RuntimeError(status::SimpleDatabase_DropDatabase, "SimpleDatabase::DropDatabase");
        }
        m_impl->RequireDatabase();
        if (!cascade) {
            const auto catalog = m_impl->View();
            for (const std::wstring& schema : catalog->schemas.SelectNames(MetadataTable::noParent)) {
                if (schema == systemSchema) continue;
                throw QVE_LogicError(status::SimpleDatabase_DropDatabase_cascade, "SimpleDatabase::DropDatabase");
            }
        }
    }
    Transaction transaction(*this);
    std::lock_guard guard(m_impl->mutex);
    space.closeall();
    if (m_impl->durable) {
        // Away in one step, then removed at leisure: a database that is half removed is not to be found.
        const std::wstring path = space.root();
        const std::wstring parent = Path::split(path).first;
        const WorkFolder aside(parent.empty() ? L"." : parent);
        // The others look again, and find nothing.
        if (m_impl->lock.IsOpen()) m_impl->lock.WriteCounter(m_impl->generation + 1);
        OS::rename(path, Path::join(aside.GetPath(), L"db"));
        OS::sync(parent.empty() ? L"." : parent);
    } else {
        space.rmdir(L"");
    }
    InvalidateCache();
}

void SimpleDatabase::InvalidateCache() {
    std::lock_guard guard(m_impl->mutex);
    if (m_impl->transaction && m_impl->transaction->working) return;
    m_impl->committed.reset();
    m_impl->guids.clear();
}

// Spaces of schemas

RefCntPtr<TableSpace> SimpleDatabase::GetTableSpace(const std::wstring& schema) {
    std::lock_guard guard(m_impl->mutex);
    return m_impl->GetArea(schema).space;
}

bool SimpleDatabase::HasTableSpace(const std::wstring& schema) const {
    std::lock_guard guard(m_impl->mutex);
    return m_impl->HasOwnSpace(schema);
}

void SimpleDatabase::AddTableSpace(const std::wstring& schema, RefCntPtr<TableSpace> space) {
    std::lock_guard guard(m_impl->mutex);
    if (m_impl->HasOwnSpace(schema)) {
        throw QVE_LogicError(status::SimpleDatabase_AddTableSpace,
                             "SimpleDatabase::AddTableSpace: Schema already has tablespace");
    }
    m_impl->areas.emplace(schema, std::make_unique<Impl::Area>(std::move(space), false));
}

void SimpleDatabase::RemoveTableSpace(const std::wstring& schema) {
    std::lock_guard guard(m_impl->mutex);
    const auto area = m_impl->areas.find(schema);
    if (area == m_impl->areas.end()) {
        throw QVE_LogicError(status::SimpleDatabase_RemoveTableSpace,
                             "SimpleDatabase::RemoveTableSpace: Schema does not have a tablespace");
    }
    const TableSpace* const space = area->second->space.get();
    std::erase_if(m_impl->guids, [space](const auto& known) { return known.first.first == space; });
    m_impl->areas.erase(area);
}

bool SimpleDatabase::SchemaUsesSystemTables(const std::wstring& schema) const {
    std::lock_guard guard(m_impl->mutex);
    return schema != systemSchema && !m_impl->HasOwnSpace(schema);
}

// Schemas

std::vector<std::wstring> SimpleDatabase::GetSchemaNames() const {
    std::lock_guard guard(m_impl->mutex);
    std::vector<std::wstring> names = m_impl->View()->schemas.SelectNames(MetadataTable::noParent);
    for (const auto& [schema, area] : m_impl->areas) {
        if (IsUserName(schema)) names.push_back(schema);
    }
    return names;
}

bool SimpleDatabase::HasSchema(const std::wstring& schema) const {
    std::lock_guard guard(m_impl->mutex);
    if (schema == systemSchema || m_impl->HasOwnSpace(schema)) return true;
    return m_impl->View()->schemas.HasName(MetadataTable::noParent, schema);
}

std::unique_ptr<DatabaseSchema> SimpleDatabase::LoadSchema(const std::wstring& schema) {
    if (!HasSchema(schema)) {
        throw QVE_RangeError(status::SimpleDatabase_GetSchema,
                             "SimpleDatabase::LoadSchema: no such schema " + narrow(schema));
    }
    return std::make_unique<DatabaseSchema>(schema, this);
}

void SimpleDatabase::CreateSchema(const std::wstring& schema) {
    Metrics::Scope scope("SimpleDatabase::CreateSchema");
    RequireUserName("SimpleDatabase::CreateSchema", schema);
    Transaction transaction(*this);
    {
        std::lock_guard guard(m_impl->mutex);
        if (HasSchema(schema)) {
            throw QVE_RangeError(status::SimpleDatabase_CreateSchema, "SimpleDatabase::CreateSchema");
        }
        Catalog& catalog = m_impl->Work();
        usrprops properties;
        properties.set(usrpropkey::name, schema);
        properties.set(usrpropkey::data_file, m_impl->AllocateMetadataDir(m_impl->root, schema, L""));
        catalog.schemas.InsertMetadata(MetadataTable::noParent, schema, properties);
    }
    transaction.Commit();
}

void SimpleDatabase::DropSchema(const std::wstring& schema, bool cascade, bool ifexists) {
    Metrics::Scope scope("SimpleDatabase::DropSchema");
    const auto fail = [] { throw QVE_RuntimeError(status::SimpleDatabase_DropSchema, "SimpleDatabase::DropSchema"); };
    if (!SchemaUsesSystemTables(schema)) fail();
    Transaction transaction(*this);
    {
        std::lock_guard guard(m_impl->mutex);
        if (!HasSchema(schema)) {
            if (!ifexists) fail();
            return transaction.Commit();
        }
        Catalog& catalog = m_impl->Work();
        const uint64_t id = m_impl->FindSchema(catalog, schema);
        const std::vector<std::wstring> tables = catalog.tables.SelectNames(id);
        if (!tables.empty() && !cascade) fail();
        for (const std::wstring& table : tables) DropTable(table, schema, true, false);
        m_impl->root.changes.rmdirs.push_back(
            m_impl->FileName(catalog.schemas.SelectProperties(id), usrpropkey::data_file));
        catalog.schemas.DeleteMetadata(id);
    }
    transaction.Commit();
}

// Tables

std::vector<std::wstring> SimpleDatabase::GetTableNames(const std::wstring& schema) const {
    std::lock_guard guard(m_impl->mutex);
    std::vector<std::wstring> names;
    if (schema == systemSchema) {
        for (const SystemTable& table : SystemTables()) names.push_back(table.name);
    } else if (const auto catalog = m_impl->CatalogOf(schema)) {
        names = catalog->tables.SelectNames(m_impl->FindSchema(*catalog, schema));
    } else {
        for (SpaceListing::Table& table : SpaceListing::Tables(*m_impl->GetArea(schema).space)) {
            names.push_back(std::move(table.name));
        }
    }
    return names;
}

void SimpleDatabase::CreateTable(const std::wstring& table, const std::wstring& schema, const usrprops& properties) {
    Metrics::Scope scope("SimpleDatabase::CreateTable");
    RequireUserName("SimpleDatabase::CreateTable", table);
    m_impl->RefuseSystemSchema(schema);
    Transaction transaction(*this);
    {
        std::lock_guard guard(m_impl->mutex);
        const std::vector<std::wstring> tables = GetTableNames(schema);
        if (std::find(tables.begin(), tables.end(), table) != tables.end()) {
            throw QVE_RuntimeError(status::SimpleDatabase_CreateTable, "SimpleDatabase::CreateTable");
        }
        usrprops stored = properties;
        stored.set(usrpropkey::name, table);
        Impl::Area& area = m_impl->GetArea(schema);
        if (SchemaUsesSystemTables(schema)) {
            Catalog& catalog = m_impl->Work();
            const uint64_t parent = m_impl->FindSchema(catalog, schema);
            const std::wstring base = m_impl->FileName(catalog.schemas.SelectProperties(parent), usrpropkey::data_file);
            stored.set(usrpropkey::data_file, m_impl->AllocateMetadataDir(area, table, base));
            catalog.tables.InsertMetadata(parent, table, stored);
        } else {
            const std::wstring directory = m_impl->AllocateMetadataDir(area, table, L"");
            const std::wstring file = Path::join(directory, SpaceListing::tableFile);
            stored.set(usrpropkey::data_file, directory);
            area.space->create(file);
            WritePropertyFile(*area.space, file, stored);
        }
    }
    transaction.Commit();
}

usrprops SimpleDatabase::DescribeTable(const std::wstring& table, const std::wstring& schema) const {
    std::lock_guard guard(m_impl->mutex);
    usrprops properties;
    const auto catalog = m_impl->CatalogOf(schema);
    if (schema != systemSchema) {
        const Impl::Place place = m_impl->FindTable(catalog.get(), table, schema);
        const std::wstring file = Path::join(place.directory, SpaceListing::tableFile);
        if (catalog) {
            properties = catalog->tables.SelectProperties(place.id);
        } else if (place.area->space->isfile(file)) {
            properties = ReadPropertyFile(*place.area->space, file);
        }
    }
    properties.set(usrpropkey::name, table);
    return properties;
}

void SimpleDatabase::DropTable(const std::wstring& table, const std::wstring& schema, bool, bool ifexists) {
    Metrics::Scope scope("SimpleDatabase::DropTable");
    m_impl->RefuseSystemSchema(schema);
    Transaction transaction(*this);
    {
        std::lock_guard guard(m_impl->mutex);
        if (ifexists) {
            if (!HasSchema(schema)) return transaction.Commit();
            const std::vector<std::wstring> tables = GetTableNames(schema);
            if (std::find(tables.begin(), tables.end(), table) == tables.end()) return transaction.Commit();
        }
        const Impl::Place place = m_impl->FindTable(m_impl->CatalogOf(schema).get(), table, schema);
        if (!place.area->space->isdir(place.directory)) {
            throw QVE_RuntimeError(status::SimpleDatabase_DropTable_directory,
                                   "SimpleDatabase::DropTable: directory \"" + narrow(place.directory) +
                                       "\" does not exist, can't drop table " + narrow(table));
        }
        if (place.id != MetadataTable::noParent) {
            Catalog& catalog = m_impl->Work();
            for (const std::wstring& column : catalog.columns.SelectNames(place.id)) {
                catalog.columns.DeleteMetadata(catalog.columns.SelectMetadataName(place.id, column));
            }
            catalog.tables.DeleteMetadata(place.id);
            place.area->changes.rmdirs.push_back(place.directory);
        } else {
            // Without a catalog the directory is the table.
            place.area->space->rmdir(place.directory);
        }
    }
    transaction.Commit();
}

}  // namespace qve
