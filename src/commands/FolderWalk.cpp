#include "commands/FolderWalk.h"

#include <algorithm>
#include <optional>

#include "os/OS.h"
#include "os/Path.h"
#include "storage/Package.h"
#include "storage/SimpleDatabase.h"
#include "system/QuillonException.h"

namespace qve {

namespace {

// A link that leads back up must not make the walk endless.
constexpr unsigned maxDepth = 64;

constexpr datetime FromUnixTime(int64_t seconds) {
    constexpr int64_t secondsPerDay = 86400;
    const int64_t day = seconds >= 0 ? seconds / secondsPerDay : -((-seconds + secondsPerDay - 1) / secondsPerDay);
    const int64_t rest = seconds - day * secondsPerDay;
    const date epoch = date::gregoriandate(1970, 1, 1);
    return datetime::at(date{static_cast<unsigned>(epoch.value + day)}, static_cast<unsigned long long>(rest) * 10000);
}

std::optional<FolderWalk::Entry> Look(const std::wstring& folder, const std::wstring& name) {
    try {
        const OS::Status status = OS::stat(Path::join(folder, name));
        return FolderWalk::Entry{name, status.directory, status.size, FromUnixTime(status.modified)};
    } catch (const QVE_RuntimeError&) {
        return std::nullopt;  // gone since it was listed, or a link to nothing
    }
}

void Walk(const std::wstring& folder, const std::wstring& below, bool cascade, unsigned depth,
          std::vector<FolderWalk::Entry>& entries) {
    for (const std::wstring& name : OS::listdir(Path::join(folder, below))) {
        auto entry = Look(folder, Path::join(below, name));
        if (!entry) continue;
        const bool enter = cascade && entry->directory && depth < maxDepth;
        entries.push_back(std::move(*entry));
        if (enter) Walk(folder, Path::join(below, name), cascade, depth + 1, entries);
    }
}

}  // namespace

std::vector<FolderWalk::Entry> FolderWalk::List(const std::wstring& folder, bool cascade) {
    std::vector<Entry> entries;
    Walk(folder, std::wstring(), cascade, 0, entries);
    std::sort(entries.begin(), entries.end(), [](const Entry& a, const Entry& b) { return a.name < b.name; });
    return entries;
}

uint64_t FolderWalk::TotalSize(const std::wstring& folder) {
    uint64_t size = 0;
    for (const Entry& entry : List(folder, true)) {
        if (!entry.directory) size += entry.size;
    }
    return size;
}

bool FolderWalk::IsDatabase(const std::wstring& path) {
    if (Path::isfile(path)) return Package::IsPackage(path);
    const std::wstring& folder = path;
    return Path::isfile(Path::join(folder, SimpleDatabase::databaseTypeFile)) &&
           Path::isdir(Path::join(folder, Database::systemSchema));
}

}  // namespace qve
