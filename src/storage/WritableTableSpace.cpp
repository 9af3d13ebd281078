#include "storage/WritableTableSpace.h"

#include <set>

#include "os/OS.h"
#include "os/Path.h"
#include "storage/DirectoryTableSpace.h"
#include "storage/MemoryDirectoryTableSpace.h"
#include "telemetry/Logger.h"

namespace qve {

namespace {

RefCntPtr<TableSpace> MakeOverlay() {
    if (MemoryDirectoryTableSpace::s_useMemoryDirectoryTableSpace) return MakeRef<MemoryDirectoryTableSpace>();
    return MakeRef<DirectoryTableSpace>();
}

}  // namespace

WritableTableSpace::WritableTableSpace(RefCntPtr<TableSpace> base)
    : m_base(std::move(base)), m_overlay(MakeOverlay()) {}

WritableTableSpace::~WritableTableSpace() {
    // The overlay goes with the object; what cannot be removed of it is a leftover in the temporary directory.
    try {
        m_overlay->closeall();
        m_overlay->rmdir(L"");
    } catch (const std::exception& fault) {
        Logger::Get()->QueueMessage(std::string("WritableTableSpace: ") + fault.what());
    }
}

bool WritableTableSpace::IsVisibleInBase(const std::wstring& path) const {
    return !IsHidden(path) && m_base->exists(path);
}

const std::wstring& WritableTableSpace::root() const {
    return m_modified || !m_hidden.empty() ? m_overlay->root() : m_base->root();
}

bool WritableTableSpace::exists(const std::wstring& path) const {
    const std::wstring entry = Path::normpath(path);
    return IsVisibleInBase(entry) || m_overlay->exists(entry);
}

bool WritableTableSpace::isfile(const std::wstring& path) const {
    const std::wstring file = Path::normpath(path);
    return (!IsHidden(file) && m_base->isfile(file)) || m_overlay->isfile(file);
}

bool WritableTableSpace::isdir(const std::wstring& path) const {
    const std::wstring directory = Path::normpath(path);
    return (!IsHidden(directory) && m_base->isdir(directory)) || m_overlay->isdir(directory);
}

std::vector<std::wstring> WritableTableSpace::listdir(const std::wstring& path) const {
    const std::wstring directory = Path::normpath(path);
    std::vector<std::wstring> names;
    if (m_overlay->exists(directory)) names = m_overlay->listdir(directory);
    if (!IsVisibleInBase(directory)) return names;
    std::set<std::wstring> merged(names.begin(), names.end());
    for (std::wstring& name : m_base->listdir(directory)) {
        if (!IsHidden(Path::join(directory, name))) merged.insert(std::move(name));
    }
    return {merged.begin(), merged.end()};
}

void WritableTableSpace::mkdirw(const std::wstring& path) {
    const std::wstring directory = Path::normpath(path);
    if (!Path::exists(m_overlay->root())) {
        Logger::Get()->QueueMessage(L"mkdirw: Recreating missing directory: " + m_overlay->root());
        OS::mkdir(m_overlay->root(), false);
    }
    if (!exists(directory)) return;
    const std::wstring parent = Path::split(directory).first;
    if (parent != directory && m_base->exists(parent) && !m_overlay->exists(parent)) mkdirw(parent);
    if (m_overlay->exists(directory)) return;
    m_overlay->mkdir(directory);
    m_modified = true;
}

void WritableTableSpace::mkdir(const std::wstring& path) {
    const std::wstring directory = Path::normpath(path);
    // The base refuses what exists in it, in its own words.
    if (IsVisibleInBase(directory)) m_base->mkdir(directory);
    mkdirw(Path::split(directory).first);
    m_overlay->mkdir(directory);
    m_modified = true;
}

void WritableTableSpace::create(const std::wstring& path) {
    const std::wstring file = Path::normpath(path);
    if (IsVisibleInBase(file)) m_base->create(file);
    mkdirw(Path::split(file).first);
    m_overlay->create(file);
    m_modified = true;
}

void WritableTableSpace::rename(const std::wstring& from, const std::wstring& to) {
    const std::wstring source = Path::normpath(from);
    const std::wstring target = Path::normpath(to);
    if (!IsVisibleInBase(source)) {
        // The target may be a file of the base: the overlay's takes its place.
        if (IsVisibleInBase(target)) {
            mkdirw(Path::split(target).first);
            m_hidden.insert(target);
        }
        m_overlay->rename(source, target);
        m_modified = true;
        return;
    }
    m_hidden.insert(source);
    create(target);
    const RefCntPtr<DataStream> copy = m_overlay->open(target, true);
    const RefCntPtr<DataStream> original = m_base->open(source, false);
    DataStream::CopyData(*copy, *original);
    m_base->close(source);
    m_overlay->close(target);
}

RefCntPtr<DataStream> WritableTableSpace::open(const std::wstring& path, bool writable) {
    const std::wstring file = Path::normpath(path);
    if (IsVisibleInBase(file)) {
        if (!writable) return m_base->open(file, false);
        rename(file, file);
    }
    return m_overlay->open(file, writable);
}

void WritableTableSpace::unlink(const std::wstring& path) {
    const std::wstring file = Path::normpath(path);
    if (!IsHidden(file) && m_base->isfile(file)) {
        m_hidden.insert(file);
    } else {
        m_overlay->unlink(file);
    }
}

void WritableTableSpace::rmdir(const std::wstring& path) {
    const std::wstring directory = Path::normpath(path);
    for (const std::wstring& name : listdir(directory)) {
        const std::wstring child = Path::join(directory, name);
        if (isfile(child)) {
            unlink(child);
        } else {
            rmdir(child);
        }
    }
    if (!IsHidden(directory) && m_base->isdir(directory)) {
        m_hidden.insert(directory);
        // The overlay may have the directory too, for files made in it; left behind, it would still answer.
        if (!directory.empty() && m_overlay->isdir(directory)) m_overlay->rmdir(directory);
    } else {
        m_overlay->rmdir(directory);
    }
}

void WritableTableSpace::close(const std::wstring& path) {
    const std::wstring file = Path::normpath(path);
    (IsVisibleInBase(file) ? m_base : m_overlay)->close(file);
}

void WritableTableSpace::closeall() {
    m_base->closeall();
    m_overlay->closeall();
}

}  // namespace qve
