#include "storage/MemoryDirectoryTableSpace.h"

#include <deque>

#include "os/OS.h"
#include "os/Path.h"
#include "storage/status.h"
#include "storage/stream/TempFileDataStream.h"
#include "system/QuillonException.h"

namespace qve {

std::atomic<bool> MemoryDirectoryTableSpace::s_useMemoryDirectoryTableSpace{false};

MemoryDirectoryTableSpace::MemoryDirectoryTableSpace() : m_rootExists(false) {}

MemoryDirectoryTableSpace::MemoryDirectoryTableSpace(const std::wstring& path) : m_root(path), m_rootExists(true) {}

const std::wstring& MemoryDirectoryTableSpace::root() const {
    if (m_root.empty()) {
        m_root = OS::mkdtemp();
        m_rootExists = true;
        m_rootOnDisk = true;
    }
    return m_root;
}

void MemoryDirectoryTableSpace::InsertDirectory(const std::wstring& path) {
    m_directories.insert(Path::split(path));
}

void MemoryDirectoryTableSpace::DeleteDirectory(const std::wstring& path) {
    const auto [parent, name] = Path::split(path);
    const auto [begin, end] = m_directories.equal_range(parent);
    for (auto entry = begin; entry != end; ++entry) {
        if (entry->second != name) continue;
        m_directories.erase(entry);
        return;
    }
}

void MemoryDirectoryTableSpace::mkdir(const std::wstring& path) {
    const std::wstring directory = Path::normpath(path);
    if (directory.empty()) {
        m_rootExists = true;
        return;
    }
    // As a file system refuses it: the catalog finds free names by trying.
    if (m_entries.count(directory) != 0) {
        throw QVE_InvalidArgument(status::MemoryDirectoryTableSpace_mkdir, "MemoryDirectoryTableSpace::mkdir");
    }
    InsertDirectory(directory);
    m_entries.emplace(directory, nullptr);
}

std::vector<std::wstring> MemoryDirectoryTableSpace::listdir(const std::wstring& path) const {
    std::vector<std::wstring> names;
    const auto [begin, end] = m_directories.equal_range(Path::normpath(path));
    for (auto entry = begin; entry != end; ++entry) names.push_back(entry->second);
    return names;
}

void MemoryDirectoryTableSpace::rmdir(const std::wstring& path) {
    const std::wstring top = Path::normpath(path);
    std::deque<std::wstring> work{top};
    std::vector<std::wstring> emptied;
    while (!work.empty()) {
        const std::wstring directory = std::move(work.front());
        work.pop_front();
        for (const std::wstring& name : listdir(directory)) {
            const std::wstring child = Path::join(directory, name);
            if (isdir(child)) {
                work.push_back(child);
            } else {
                unlink(child);
            }
        }
        if (!directory.empty()) emptied.push_back(directory);
    }
    for (const std::wstring& directory : emptied) unlink(directory);
    if (top.empty() && m_rootExists) {
        m_rootExists = false;
        if (m_rootOnDisk) OS::rmdir(m_root, true);
        m_rootOnDisk = false;
    }
}

void MemoryDirectoryTableSpace::create(const std::wstring& path) {
    const std::wstring file = Path::normpath(path);
    if (exists(file)) {
        throw QVE_InvalidArgument(status::MemoryDirectoryTableSpace_create, "MemoryDirectoryTableSpace::create");
    }
    auto stream = MakeRef<TempFileDataStream>();
    InsertDirectory(file);
    m_entries.emplace(file, std::move(stream));
}

void MemoryDirectoryTableSpace::rename(const std::wstring& from, const std::wstring& to) {
    const std::wstring source = Path::normpath(from);
    const std::wstring target = Path::normpath(to);
    if (source == target) return;
    const auto entry = m_entries.find(source);
    if (entry == m_entries.end()) return;
    RefCntPtr<DataStream> stream = std::move(entry->second);
    m_entries.erase(entry);
    DeleteDirectory(source);
    if (!m_entries.insert_or_assign(target, std::move(stream)).second) DeleteDirectory(target);
    InsertDirectory(target);
}

void MemoryDirectoryTableSpace::unlink(const std::wstring& path) {
    const std::wstring file = Path::normpath(path);
    m_entries.erase(file);
    DeleteDirectory(file);
}

bool MemoryDirectoryTableSpace::exists(const std::wstring& path) const {
    const std::wstring entry = Path::normpath(path);
    return entry.empty() ? m_rootExists : m_entries.count(entry) != 0;
}

bool MemoryDirectoryTableSpace::isfile(const std::wstring& path) const {
    const auto entry = m_entries.find(Path::normpath(path));
    return entry != m_entries.end() && entry->second;
}

bool MemoryDirectoryTableSpace::isdir(const std::wstring& path) const {
    const std::wstring directory = Path::normpath(path);
    if (directory.empty()) return m_rootExists;
    const auto entry = m_entries.find(directory);
    return entry != m_entries.end() && !entry->second;
}

RefCntPtr<DataStream> MemoryDirectoryTableSpace::open(const std::wstring& path, bool) {
    const auto entry = m_entries.find(Path::normpath(path));
    if (entry == m_entries.end() || !entry->second) {
        throw QVE_InvalidArgument(status::MemoryDirectoryTableSpace_open, "MemoryDirectoryTableSpace::open");
    }
    return entry->second;
}

}  // namespace qve
