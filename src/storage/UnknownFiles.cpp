#include "storage/UnknownFiles.h"

#include <algorithm>
#include <set>

#include "os/Path.h"

namespace qve {

namespace {

void Collect(const TableSpace& space, const std::wstring& path, const std::vector<std::wstring>& known,
             std::vector<std::wstring>& unknown) {
    for (const std::wstring& name : space.listdir(path)) {
        const std::wstring child = Path::join(path, name);
        if (std::binary_search(known.begin(), known.end(), child)) {
            if (space.isdir(child)) Collect(space, child, known, unknown);
        } else if (name.front() != L'.') {
            unknown.push_back(child);
        }
    }
}

bool IsColumnFile(const std::wstring& path) {
    using D = SimpleDatabase;
    const std::wstring extension = Path::splitext(path).second;
    return extension == D::extDataFile || extension == D::extDictFile || extension == D::extTypeFile ||
           extension == D::extTempFile;
}

/// Whether a directory could be that of a table: column files, and nothing else.
bool IsTableDirectory(const TableSpace& space, const std::wstring& path) {
    const std::vector<std::wstring> names = space.listdir(path);
    return std::all_of(names.begin(), names.end(), [&](const std::wstring& name) {
        const std::wstring child = Path::join(path, name);
        return IsColumnFile(child) && space.isfile(child);
    });
}

}  // namespace

std::vector<std::wstring> FindUnknownFiles(SimpleDatabase& database) {
    std::vector<std::wstring> known{SimpleDatabase::databaseTypeFile, Database::systemSchema};
    for (const std::wstring& schema : database.GetSchemaNames()) {
        if (database.HasTableSpace(schema)) continue;
        known.push_back(database.GetSchemaDirectory(schema));
        for (const std::wstring& table : database.GetTableNames(schema)) {
            // A system table has a directory, and its columns lie beside it.
            known.push_back(schema == Database::systemSchema ? Path::join(schema, table)
                                                             : database.GetTableDirectory(table, schema));
            for (std::wstring& file : database.GetColumnFiles(table, schema)) known.push_back(std::move(file));
        }
    }
    std::sort(known.begin(), known.end());
    std::vector<std::wstring> unknown;
    Collect(*database.GetTableSpace(Database::systemSchema), L"", known, unknown);
    return unknown;
}

std::vector<std::wstring> RemoveOrphans(SimpleDatabase& database) {
    const RefCntPtr<TableSpace> space = database.GetTableSpace(Database::systemSchema);
    std::set<std::wstring> schemas;  // directories of them; the system's own holds nothing of others
    std::set<std::wstring> tables;
    for (const std::wstring& schema : database.GetSchemaNames()) {
        if (database.HasTableSpace(schema) || schema == Database::systemSchema) continue;
        schemas.insert(database.GetSchemaDirectory(schema));
        for (const std::wstring& table : database.GetTableNames(schema)) {
            tables.insert(database.GetTableDirectory(table, schema));
        }
    }
    std::vector<std::wstring> removed;
    for (const std::wstring& path : FindUnknownFiles(database)) {
        const std::wstring parent = Path::split(path).first;
        const bool isDirectory = space->isdir(path);
        const bool isOrphan = isDirectory
                                  ? (parent.empty() ? space->listdir(path).empty()
                                                    : schemas.count(parent) && IsTableDirectory(*space, path))
                                  : parent == Database::systemSchema || (tables.count(parent) && IsColumnFile(path));
        if (!isOrphan) continue;
        if (isDirectory) {
            space->rmdir(path);
        } else {
            space->unlink(path);
        }
        removed.push_back(path);
    }
    return removed;
}

}  // namespace qve
