#include "storage/DirectoryTableSpace.h"

#include <algorithm>
#include <vector>

#include "os/MappedFile.h"
#include "os/OS.h"
#include "os/Path.h"
#include "storage/status.h"
#include "storage/stream/FileDataStream.h"
#include "system/QuillonException.h"

namespace qve {

DirectoryTableSpace::DirectoryTableSpace() = default;

DirectoryTableSpace::DirectoryTableSpace(const std::wstring& path) : m_root(path) {}

const std::wstring& DirectoryTableSpace::root() const {
    if (m_root.empty()) m_root = OS::mkdtemp();
    return m_root;
}

std::wstring DirectoryTableSpace::Resolve(const std::wstring& path) const {
    return Path::join(root(), path);
}

void DirectoryTableSpace::Touched(const std::wstring& path) {
    m_changed.insert(Path::split(path).first);
}

void DirectoryTableSpace::mkdir(const std::wstring& path) {
    OS::mkdir(Resolve(path), false);
    if (!path.empty()) Touched(path);
}

std::vector<std::wstring> DirectoryTableSpace::listdir(const std::wstring& path) const {
    return OS::listdir(Resolve(path));
}

void DirectoryTableSpace::rmdir(const std::wstring& path) {
    if (m_root.empty() && path.empty()) return;
    const std::wstring below = path.empty() ? path : path + L"/";
    std::erase_if(m_files, [&](const auto& file) { return file.first.compare(0, below.size(), below) == 0; });
    std::erase_if(m_changed, [&](const auto& directory) {
        return directory == path || directory.compare(0, below.size(), below) == 0;
    });
    OS::rmdir(Resolve(path), true);
    if (!path.empty()) Touched(path);
}

void DirectoryTableSpace::create(const std::wstring& path) {
    const std::wstring file = Resolve(path);
    if (Path::exists(file)) {
        throw QVE_InvalidArgument(status::DirectoryTableSpace_create, "DirectoryTableSpace::create");
    }
    OS::touch(file);
    Touched(path);
}

void DirectoryTableSpace::rename(const std::wstring& from, const std::wstring& to) {
    close(from);
    m_files.erase(to);
    OS::rename(Resolve(from), Resolve(to));
    m_written.erase(to);
    if (m_written.erase(from) != 0) m_written.insert(to);
    Touched(from);
    Touched(to);
}

void DirectoryTableSpace::unlink(const std::wstring& path) {
    m_files.erase(path);
    m_written.erase(path);
    OS::unlink(Resolve(path));
    Touched(path);
}

bool DirectoryTableSpace::exists(const std::wstring& path) const {
    return Path::exists(Resolve(path));
}

bool DirectoryTableSpace::isfile(const std::wstring& path) const {
    return Path::isfile(Resolve(path));
}

bool DirectoryTableSpace::isdir(const std::wstring& path) const {
    return Path::isdir(Resolve(path));
}

RefCntPtr<DataStream> DirectoryTableSpace::open(const std::wstring& path, bool writable) {
    auto known = m_files.find(path);
    if (known != m_files.end()) {
        OpenFile& open = known->second;
        // One that was cut short by someone else must not be touched beyond its end.
        const bool same = open.file->IsWritable() == writable &&
                          (!open.mapped || (open.cuts == MappedFile::GetCutCount() &&
                                            open.file->UpdateSize() == open.mapped->GetSize()));
        if (!same) {
            close(path);
            known = m_files.end();
        }
    }
    if (known == m_files.end()) {
        known = m_files.emplace(path, OpenFile{MakeRef<DataFile>(Resolve(path), writable), nullptr}).first;
    }
    OpenFile& open = known->second;
    open.lastUse = ++m_uses;
    if (writable) return FileDataStream::OpenStream(open.file, 0, open.file->GetSize());
    return open.mapped ? open.mapped->Fork(true) : Map(open);
}

RefCntPtr<DataStream> DirectoryTableSpace::Map(OpenFile& open) {
    constexpr uint64_t most = uint64_t{2} << 30;  // bytes that stay mapped, all files together
    RefCntPtr<DataStream> stream = FileDataStream::OpenStream(open.file, 0, open.file->GetSize());
    const uint64_t size = stream->GetSize();
    if (size > most) return stream;
    if (size > stream->GetPageLimit()) {
        stream->SetPageLimit(size);
        stream->Seek(0, size);
    }
    uint64_t mapped = size;
    std::vector<OpenFile*> others;
    for (auto& [path, other] : m_files) {
        if (!other.mapped) continue;
        mapped += other.mapped->GetSize();
        others.push_back(&other);
    }
    std::sort(others.begin(), others.end(), [](auto a, auto b) { return a->lastUse < b->lastUse; });
    for (OpenFile* other : others) {
        if (mapped <= most) break;
        mapped -= other->mapped->GetSize();
        other->mapped.reset();
    }
    open.mapped = stream;
    open.cuts = MappedFile::GetCutCount();
    return stream->Fork(true);
}

void DirectoryTableSpace::close(const std::wstring& path) {
    const auto known = m_files.find(path);
    if (known == m_files.end()) return;
    // Much of what a transaction writes is replaced before its end, so nothing is brought to the disk before closeall.
    if (known->second.file->IsWritable()) {
        // Whoever opens the file takes its length for that of its contents.
        known->second.file->Trim();
        m_written.insert(path);
    }
    m_files.erase(known);
}

void DirectoryTableSpace::closeall() {
    while (!m_files.empty()) close(std::wstring(m_files.begin()->first));
    // A file or a directory may have gone since with its parent; there is nothing to keep of it then.
    for (const std::wstring& path : m_written) {
        const std::wstring file = Resolve(path);
        if (Path::isfile(file)) OS::sync(file);
    }
    m_written.clear();
    for (const std::wstring& directory : m_changed) {
        const std::wstring path = Resolve(directory);
        if (Path::isdir(path)) OS::sync(path);
    }
    m_changed.clear();
}

}  // namespace qve
