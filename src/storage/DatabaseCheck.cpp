#include "storage/DatabaseCheck.h"

#include <algorithm>
#include <ctime>
#include <cwctype>
#include <iterator>
#include <optional>
#include <set>

#include "os/OS.h"
#include "os/Path.h"
#include "os/WorkFolder.h"
#include "storage/Package.h"
#include "storage/PropertyFile.h"
#include "storage/UnknownFiles.h"
#include "storage/verify_column.h"
#include "system/Operator.h"
#include "system/QuillonException.h"
#include "system/unicode.h"

namespace qve {
namespace {

std::wstring NameOfTable(const std::wstring& schema, const std::wstring& table) {
    return L"[" + schema + L"].[" + table + L"]";
}

bool IsOwnSchema(const std::wstring& schema) {
    return schema == Database::tempSchema;
}

/// How the names of folders begin that a process has among the temporary files; each is claimed while it runs.
const wchar_t* const s_processFolders[] = {L"qve_temp_", L"qve-tempdir-"};

bool IsProcessFolder(const std::wstring& name) {
    return std::any_of(std::begin(s_processFolders), std::end(s_processFolders),
                       [&](const wchar_t* prefix) { return name.starts_with(prefix); });
}

/// Whether a name is that of a temporary file of a process without a folder of its own: such a file has no owner.
bool IsLoose(const std::wstring& name) {
    const std::wstring_view prefix = L"qve_";
    constexpr size_t random = 6;  // characters
    return name.starts_with(prefix) && name.size() == prefix.size() + random &&
           std::all_of(name.begin() + static_cast<std::ptrdiff_t>(prefix.size()), name.end(),
                       [](wchar_t c) { return c < 128 && std::iswalnum(static_cast<std::wint_t>(c)); });
}

bool IsOld(const std::wstring& path) {
    constexpr int64_t day = 24 * 60 * 60;
    try {
        return OS::stat(path).modified + day < std::time(nullptr);
    } catch (const QuillonException&) {
        return false;  // gone just now
    }
}

void Remove(const std::wstring& path) {
    if (Path::isdir(path)) {
        // Claimed while it goes: by now it may be another process's.
        const FolderClaim claim(path);
        if (claim.IsHeld()) OS::rmdir(path, true);
    } else {
        OS::unlink(path);
    }
}

}  // namespace

const wchar_t* DatabaseCheck::NameOf(Kind kind) {
    switch (kind) {
        case Kind::damage:
            return L"damage";
        case Kind::leftover:
            return L"leftover";
        case Kind::removed:
            return L"removed";
        case Kind::salvaged:
            return L"salvaged";
        default:
            return L"note";
    }
}

DatabaseCheck::DatabaseCheck(std::wstring path, RefCntPtr<ProgressCallback> progress)
    : m_path(std::move(path)), m_progress(std::move(progress)) {}

void DatabaseCheck::Add(Kind kind, std::wstring place, std::wstring text) {
    m_findings.push_back({kind, std::move(place), std::move(text)});
}

void DatabaseCheck::Damage(std::wstring place, const std::exception& fault) {
    const auto* numbered = dynamic_cast<const QuillonException*>(&fault);
    const std::wstring number = numbered ? L"error " + std::to_wstring(numbered->GetStatus()) + L": " : std::wstring();
    Add(Kind::damage, std::move(place), number + widen(std::string_view(fault.what())));
}

void DatabaseCheck::Step() {
    if (!m_progress) return;
    if (m_progress->IsCancelled()) throw Operator::CancelledException();
    m_progress->SetProgress(0, 0, m_done, m_total);
}

void DatabaseCheck::Verify() {
    if (!Open()) return;
    std::vector<TableName> tables;
    for (const std::wstring& schema : m_database->GetSchemaNames()) {
        if (IsOwnSchema(schema)) continue;
        for (const std::wstring& table : m_database->GetTableNames(schema)) {
            tables.emplace_back(schema, table);
            m_total += m_database->GetColumnNames(table, schema).size();
        }
    }
    for (const TableName& table : tables) CheckTable(table);
    FindLeftovers();
}

bool DatabaseCheck::Open() {
    if (!Path::exists(m_path)) {
        Add(Kind::damage, m_path, L"there is nothing");
        return false;
    }
    try {
        if (Path::isfile(m_path)) Package::Open(MakeRef<DataFile>(m_path, false));
        auto database = MakeRef<SimpleDatabase>(m_path);
        database->GetSchemaNames();
        m_database = std::move(database);
        return true;
    } catch (const std::exception& fault) {
        Damage(m_path, fault);
        return false;
    }
}

void DatabaseCheck::CheckTable(const TableName& table) {
    const auto& [schema, name] = table;
    const std::wstring place = NameOfTable(schema, name);
    ++m_tables;
    std::vector<SoundColumn>& sound = m_sound[table];
    for (const std::wstring& column : m_database->GetColumnNames(name, schema)) {
        const std::wstring columnPlace = place + L".[" + column + L"]";
        ++m_columns;
        try {
            const RefCntPtr<Column> loaded = m_database->LoadColumn(column, name, schema);
            const std::wstring fault = VerifyColumn(*loaded, [this] { Step(); });
            if (!fault.empty()) {
                Add(Kind::damage, columnPlace, fault);
            } else {
                sound.push_back({column, loaded->GetCount()});
                CheckPropertyFile(column, table, columnPlace);
            }
        } catch (const std::exception& fault) {
            Damage(columnPlace, fault);
        }
        ++m_done;
        Step();
    }
    for (const SoundColumn& column : sound) {
        if (column.rows == sound.front().rows) continue;
        Add(Kind::damage, place + L".[" + column.name + L"]",
            L"it has " + std::to_wstring(column.rows) + L" rows, and [" + sound.front().name + L"] has " +
                std::to_wstring(sound.front().rows));
    }
}

void DatabaseCheck::CheckPropertyFile(const std::wstring& column, const TableName& table, const std::wstring& place) {
    const auto& [schema, name] = table;
    if (schema == Database::systemSchema) return;  // it is described by its file alone
    const usrprops catalogued = m_database->DescribeColumn(column, name, schema);
    const std::wstring file =
        Path::join(m_database->GetTableDirectory(name, schema), std::wstring(catalogued.text(usrpropkey::type_file)));
    const usrprops filed = ReadPropertyFile(*m_database->GetTableSpace(schema), file);
    // What a line cannot hold stands in the catalog alone.
    if (FormatProperties(ParseProperties(FormatProperties(catalogued))) != FormatProperties(filed)) {
        Add(Kind::damage, place, L"its property file " + file + L" says otherwise than the catalog");
    }
}

void DatabaseCheck::FindLeftovers() {
    FindNeighbours();
    if (m_database->IsPackaged()) return;
    try {
        // What another writes at this moment belongs to nobody yet.
        const Database::Transaction transaction(*m_database);
        AddUnknownFiles();
    } catch (const QuillonException& fault) {
        Add(Kind::note, m_path, L"not looked for what is left over: " + widen(std::string_view(fault.what())));
    }
}

void DatabaseCheck::AddUnknownFiles() {
    m_unknown = FindUnknownFiles(*m_database);
    for (const std::wstring& path : m_unknown) {
        Add(Kind::leftover, Path::join(m_path, path), L"the catalog does not name it");
    }
}

void DatabaseCheck::FindNeighbours() {
    const auto add = [this](std::wstring path, const wchar_t* what) {
        Add(Kind::leftover, path, what);
        m_neighbours.push_back(std::move(path));
    };
    const std::wstring folder = Path::split(m_path).first;
    for (std::wstring& path : WorkFolder::FindAbandoned(folder.empty() ? L"." : folder)) {
        add(std::move(path), L"work on databases that a process did not end");
    }
    // This process has a folder of its own among the temporary files, or two.
    std::wstring base = OS::gettempdir();
    while (IsProcessFolder(Path::split(base).second)) base = Path::split(base).first;
    for (const wchar_t* prefix : s_processFolders) {
        for (std::wstring& path : WorkFolder::FindAbandoned(base, prefix)) {
            add(std::move(path), L"temporary files of a process that is no more");
        }
    }
    for (const std::wstring& name : OS::listdir(base)) {
        std::wstring path = Path::join(base, name);
        if (IsLoose(name) && IsOld(path)) add(std::move(path), L"temporary file that nobody used for a day");
    }
}

void DatabaseCheck::RemoveLeftovers() {
    const auto removed = [this](const std::wstring& path, const auto& remove) {
        try {
            remove();
            Add(Kind::removed, path, L"");
        } catch (const QuillonException& fault) {
            Add(Kind::note, path, L"not removed: " + widen(std::string_view(fault.what())));
        }
    };
    for (const std::wstring& path : m_neighbours) removed(path, [&] { Remove(path); });
    m_neighbours.clear();
    if (m_unknown.empty()) return;
    // Since they were found, others may have come and gone, and a name may mean something else: look again.
    const Database::Transaction transaction(*m_database);
    m_unknown.clear();
    std::erase_if(m_findings, [](const Finding& f) { return f.kind == Kind::leftover && f.text.starts_with(L"the "); });
    AddUnknownFiles();
    TableSpace& space = *m_database->GetTableSpace(Database::systemSchema);
    for (const std::wstring& path : m_unknown) {
        removed(Path::join(m_path, path), [&] {
            if (space.isdir(path)) {
                space.rmdir(path);
            } else {
                space.unlink(path);
            }
        });
    }
    space.closeall();
    m_unknown.clear();
}

void DatabaseCheck::Salvage(const std::wstring& path) {
    SimpleDatabase target(path);
    target.CreateDatabase();
    if (!m_database) return;
    std::set<std::wstring> schemas;
    for (const auto& [name, columns] : m_sound) {
        const auto& [schema, table] = name;
        if (schema == Database::systemSchema) continue;
        Step();
        std::map<uint64_t, unsigned> lengths;
        for (const SoundColumn& column : columns) ++lengths[column.rows];
        const auto usual = std::max_element(lengths.begin(), lengths.end(),
                                            [](const auto& a, const auto& b) { return a.second < b.second; });
        const std::wstring place = NameOfTable(schema, table);
        try {
            Database::Transaction transaction(target);
            if (schemas.insert(schema).second && !target.HasSchema(schema)) target.CreateSchema(schema);
            target.CreateTable(table, schema);
            unsigned copied = 0;
            for (const SoundColumn& column : columns) {
                if (column.rows != usual->first) continue;
                const RefCntPtr<Column> source = m_database->LoadColumn(column.name, table, schema);
                target.CreateColumn(column.name, table, schema, source->GetProperties());
                target.ReplaceColumn(column.name, table, schema, *source);
                ++copied;
            }
            transaction.Commit();
            const size_t all = m_database->GetColumnNames(table, schema).size();
            Add(Kind::salvaged, place,
                std::to_wstring(copied) + L" of " + std::to_wstring(all) + L" columns, " +
                    std::to_wstring(columns.empty() ? 0 : usual->first) + L" rows");
        } catch (const QuillonException& fault) {
            schemas.erase(schema);
            Add(Kind::note, place, L"not salvaged: " + widen(std::string_view(fault.what())));
        }
    }
}

}  // namespace qve
