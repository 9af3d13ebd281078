// How a SimpleDatabase names files, and where it finds them.

#include <algorithm>

#include "os/Path.h"
#include "storage/PropertyFile.h"
#include "storage/SimpleDatabaseImpl.h"
#include "storage/SpaceListing.h"
#include "storage/status.h"
#include "system/QuillonException.h"
#include "system/unicode.h"

namespace qve {

namespace {

// A name in a file system has at most 255 bytes, which non-Latin letters use up sooner than the characters.
constexpr size_t maxFileNameBytes = 240;

std::wstring Cut(std::wstring name, size_t room) {
    if (name.size() > room) name.resize(room);
    while (narrow(name).size() > maxFileNameBytes) name.pop_back();
    return name;
}

}  // namespace

SimpleDatabase::Impl::Area& SimpleDatabase::Impl::GetArea(const std::wstring& schema) {
    const auto own = areas.find(schema);
    return own == areas.end() ? root : *own->second;
}

std::shared_ptr<const Catalog> SimpleDatabase::Impl::CatalogOf(const std::wstring& schema) {
    return schema == systemSchema || HasOwnSpace(schema) ? nullptr : View();
}

uint64_t SimpleDatabase::Impl::FindSchema(const Catalog& catalog, const std::wstring& schema) const {
    return catalog.schemas.SelectMetadataName(MetadataTable::noParent, schema);
}

SimpleDatabase::Impl::Place SimpleDatabase::Impl::FindTable(const Catalog* catalog, const std::wstring& table,
                                                            const std::wstring& schema) {
    if (catalog) {
        const uint64_t parent = FindSchema(*catalog, schema);
        const uint64_t id = catalog->tables.SelectMetadataName(parent, table);
        const std::wstring base = FileName(catalog->schemas.SelectProperties(parent), usrpropkey::data_file);
        return {&root, Path::join(base, FileName(catalog->tables.SelectProperties(id), usrpropkey::data_file)), id};
    }
    Area& area = GetArea(schema);
    for (const SpaceListing::Table& listed : SpaceListing::Tables(*area.space)) {
        if (listed.name == table) return {&area, listed.directory};
    }
    throw QVE_RuntimeError(status::SimpleDatabase_SelectTable,
                           "SimpleDatabase::SelectTable: no such table " + narrow(schema) + "." + narrow(table));
}

std::wstring SimpleDatabase::Impl::AllocateMetadataDir(Area& area, const std::wstring& name, const std::wstring& base) {
    const std::wstring clean = Cut(Path::cleanname(name), maxFileName - 5);
    for (unsigned n = 0;; ++n) {
        const std::wstring candidate = n == 0 ? clean : clean + L"." + std::to_wstring(n);
        const std::wstring path = Path::join(base, candidate);
        if (area.space->exists(path) && n <= 1024) continue;
        area.journal.AboutToMakeDirectory(path);
        try {
            area.space->mkdir(path);
            return candidate;
        } catch (const QuillonException&) {
            // Another may have made it just now; else the fault is not in the name.
            if (n > 1024 || (n >= 5 && !area.space->exists(path))) throw;
        }
    }
}

std::wstring SimpleDatabase::Impl::AllocateColumnFile(Area& area, const std::wstring& extension,
                                                      const std::wstring& name, const std::wstring& directory) {
    if (extension.size() + 5 > maxFileName) {
        throw QVE_LogicError(status::SimpleDatabase_AllocateColumnFile_extension, "column file extension overflow");
    }
    const std::wstring clean = Cut(Path::cleanname(name), maxFileName - extension.size() - 5);
    for (unsigned n = 0; n < 1024; ++n) {
        const std::wstring candidate = (n == 0 ? clean : clean + L"." + std::to_wstring(n)) + extension;
        const std::wstring path = Path::join(directory, candidate);
        if (area.space->exists(path)) continue;
        area.journal.AboutToCreate(path);
        area.space->create(path);
        return candidate;
    }
    throw QVE_LogicError(status::SimpleDatabase_AllocateColumnFile_names, "error allocating column file");
}

void SimpleDatabase::Impl::UpdateTypeFile(const Place& place, const usrprops& changed) {
    if (!changed.has(usrpropkey::type_file)) {
        throw QVE_RuntimeError(status::SimpleDatabase_UpdateColumnProperties,
                               "SimpleDatabase::UpdateColumnProperties: No type file name");
    }
    const std::wstring file = FileName(changed, usrpropkey::type_file);
    const std::wstring stem = Path::splitext(file).first;
    const std::wstring temporary = AllocateColumnFile(*place.area, extTempFile, stem, place.directory);
    WritePropertyFile(*place.area->space, Path::join(place.directory, temporary), changed);
    place.area->changes.renames.emplace_back(Path::join(place.directory, temporary), Path::join(place.directory, file));
}

std::wstring SimpleDatabase::Impl::FileName(const usrprops& properties, usrpropkey key) {
    // A damaged or hostile catalog could name anything.
    std::wstring name(properties.text(key));
    if (name.empty() || name == L"." || name == L".." || name.find(L'/') != std::wstring::npos ||
        std::any_of(name.begin(), name.end(), [](wchar_t c) { return c < 32; })) {
        throw QVE_RuntimeError(status::SimpleDatabase_LoadCatalog,
                               "SimpleDatabase::LoadCatalog: \"" + narrow(name) + "\" is no file name");
    }
    return name;
}

std::wstring SimpleDatabase::Impl::ColumnFile(const Place& place, const usrprops& properties, usrpropkey key) {
    return Path::join(place.directory, FileName(properties, key));
}

std::wstring SimpleDatabase::GetSchemaDirectory(const std::wstring& schema) const {
    std::lock_guard guard(m_impl->mutex);
    if (schema == systemSchema) return systemSchema;
    const auto catalog = m_impl->CatalogOf(schema);
    if (!catalog) return {};
    return Impl::FileName(catalog->schemas.SelectProperties(m_impl->FindSchema(*catalog, schema)),
                          usrpropkey::data_file);
}

std::wstring SimpleDatabase::GetTableDirectory(const std::wstring& table, const std::wstring& schema) const {
    std::lock_guard guard(m_impl->mutex);
    if (schema == systemSchema) return systemSchema;
    return m_impl->FindTable(m_impl->CatalogOf(schema).get(), table, schema).directory;
}

std::wstring SimpleDatabase::SystemColumnPath(const std::wstring& table, const std::wstring& column,
                                              const std::wstring& extension) {
    return Path::join(systemSchema, NameSystemColumn(table, column) + extension);
}

}  // namespace qve
