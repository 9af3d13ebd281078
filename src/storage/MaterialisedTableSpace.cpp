#include "storage/MaterialisedTableSpace.h"

#include <algorithm>

#include "os/Path.h"
#include "storage/PropertyFile.h"
#include "storage/SimpleDatabase.h"
#include "storage/status.h"
#include "storage/stream/TempFileDataStream.h"
#include "system/QuillonException.h"

namespace qve {

namespace {

bool IsColumnExtension(const std::wstring& extension) {
    return extension == SimpleDatabase::extTypeFile || extension == SimpleDatabase::extDataFile ||
           extension == SimpleDatabase::extDictFile;
}

[[noreturn]] void Refuse(int status, const char* text) {
    throw QVE_InvalidArgument(status, text);
}

}  // namespace

MaterialisedTableSpace::MaterialisedTableSpace(TableFactory& factory) : m_factory(factory) {
    for (std::wstring& name : factory.GetTableNames()) m_tables.insert(std::move(name));
}

RefCntPtr<MaterialisedTableSpace::Source> MaterialisedTableSpace::GetTable(const std::wstring& name) const {
    RefCntPtr<Source> table;
    if (m_tables.count(name) != 0) table = m_factory.GetTable(name);
    if (!table) Refuse(status::MaterialisedTableSpace_GetTable, "MaterialisedTableSpace::GetTable");
    return table;
}

bool MaterialisedTableSpace::exists(const std::wstring& path) const {
    const auto [directory, name] = Path::split(path);
    if (name.empty()) return true;
    if (directory.empty()) return m_tables.count(name) != 0;
    if (m_tables.count(directory) == 0) return false;
    const auto [stem, extension] = Path::splitext(name);
    if (!IsColumnExtension(extension)) return false;
    const auto table = GetTable(directory);
    const std::vector<std::wstring> columns = table->GetColumnNames();
    if (std::find(columns.begin(), columns.end(), stem) == columns.end()) return false;
    return extension != SimpleDatabase::extDictFile || table->LoadColumn(stem)->IsCompressed();
}

bool MaterialisedTableSpace::isfile(const std::wstring& path) const {
    return !Path::split(path).first.empty() && exists(path);
}

bool MaterialisedTableSpace::isdir(const std::wstring& path) const {
    return Path::split(path).first.empty() && exists(path);
}

std::vector<std::wstring> MaterialisedTableSpace::listdir(const std::wstring& path) const {
    if (path.empty()) return {m_tables.begin(), m_tables.end()};
    if (!isdir(path)) Refuse(status::MaterialisedTableSpace_listdir, "MaterialisedTableSpace::listdir");
    std::vector<std::wstring> names;
    const auto table = GetTable(path);
    for (const std::wstring& column : table->GetColumnNames()) {
        names.push_back(column + SimpleDatabase::extTypeFile);
        names.push_back(column + SimpleDatabase::extDataFile);
        if (table->LoadColumn(column)->IsCompressed()) names.push_back(column + SimpleDatabase::extDictFile);
    }
    return names;
}

RefCntPtr<DataStream> MaterialisedTableSpace::open(const std::wstring& path, bool writable) {
    if (writable) {
        Refuse(status::MaterialisedTableSpace_open_writable, "MaterialisedTableSpace::open: Read only schema");
    }
    if (!isfile(path)) {
        Refuse(status::MaterialisedTableSpace_open_unknown, "MaterialisedTableSpace::open: Unknown file");
    }
    const auto [table, name] = Path::split(path);
    const auto [stem, extension] = Path::splitext(name);
    const RefCntPtr<Column> column = GetTable(table)->LoadColumn(stem);
    if (extension == SimpleDatabase::extTypeFile) {
        const std::string text = FormatProperties(column->GetProperties());
        auto stream = MakeRef<TempFileDataStream>();
        stream->Append(text.data(), text.size());
        stream->Seek(0, text.size());
        return stream;
    }
    RefCntPtr<DataStream> stream = extension == SimpleDatabase::extDictFile ? column->GetDict() : column->GetData();
    if (!stream) Refuse(status::MaterialisedTableSpace_open_missing, "MaterialisedTableSpace::open: Missing file");
    return stream;
}

const std::wstring& MaterialisedTableSpace::root() const {
    Refuse(status::MaterialisedTableSpace_root, "MaterialisedTableSpace::root");
}

void MaterialisedTableSpace::mkdir(const std::wstring&) {
    Refuse(status::MaterialisedTableSpace_mkdir, "MaterialisedTableSpace::mkdir");
}

void MaterialisedTableSpace::rmdir(const std::wstring&) {
    Refuse(status::MaterialisedTableSpace_rmdir, "MaterialisedTableSpace::rmdir");
}

void MaterialisedTableSpace::create(const std::wstring&) {
    Refuse(status::MaterialisedTableSpace_create, "MaterialisedTableSpace::create");
}

void MaterialisedTableSpace::rename(const std::wstring&, const std::wstring&) {
    Refuse(status::MaterialisedTableSpace_rename, "MaterialisedTableSpace::rename");
}

void MaterialisedTableSpace::unlink(const std::wstring&) {
    Refuse(status::MaterialisedTableSpace_unlink, "MaterialisedTableSpace::unlink");
}

}  // namespace qve
