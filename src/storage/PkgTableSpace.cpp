#include "storage/PkgTableSpace.h"

#include <algorithm>

#include "os/Path.h"
#include "storage/status.h"
#include "storage/stream/FileDataStream.h"
#include "system/QuillonException.h"
#include "system/unicode.h"

namespace qve {
namespace {

// What stays mapped of one package, all files together.
constexpr uint64_t most_mapped = uint64_t{2} << 30;
constexpr size_t most_streams = 4096;

bool IsDirectory(const Package::Node* node) {
    return dynamic_cast<const Package::Directory*>(node) != nullptr;
}

}  // namespace

const RefCntPtr<DataFile>& PkgTableSpace::GetPackageFile() const {
    if (!m_file) m_file = MakeRef<DataFile>(m_path, false);
    return m_file;
}

const RefCntPtr<Package::Node>& PkgTableSpace::GetRootNode() const {
    if (!m_root) m_root = Package::Open(GetPackageFile(), Package::Read::directories);
    return m_root;
}

RefCntPtr<Package::Node> PkgTableSpace::ResolveRelPath(const std::wstring& path) const {
    const std::wstring wanted = Path::normpath(path);
    RefCntPtr<Package::Node> node = GetRootNode();
    for (size_t begin = 0; node && begin < wanted.size();) {
        const size_t end = std::min(wanted.find(L'/', begin), wanted.size());
        const auto* directory = dynamic_cast<const Package::Directory*>(node.get());
        node = directory ? directory->Find(wanted.substr(begin, end - begin)) : nullptr;
        begin = end + 1;
    }
    return node;
}

std::vector<std::wstring> PkgTableSpace::listdir(const std::wstring& path) const {
    std::lock_guard lock(m_mutex);
    const auto directory = DynamicPtrCast<Package::Directory>(ResolveRelPath(path));
    if (!directory) {
        throw QVE_RuntimeError(status::PkgTableSpace_listdir,
                               "PkgTableSpace::listdir(path=\"" + narrow(path) + "\"): not a directory");
    }
    std::vector<std::wstring> names;
    for (const auto& [name, child] : directory->GetChildren()) names.push_back(name);
    return names;
}

bool PkgTableSpace::exists(const std::wstring& path) const {
    std::lock_guard lock(m_mutex);
    return ResolveRelPath(path).get() != nullptr;
}

bool PkgTableSpace::isfile(const std::wstring& path) const {
    std::lock_guard lock(m_mutex);
    const RefCntPtr<Package::Node> node = ResolveRelPath(path);
    return node && !IsDirectory(node.get());
}

bool PkgTableSpace::isdir(const std::wstring& path) const {
    std::lock_guard lock(m_mutex);
    return IsDirectory(ResolveRelPath(path).get());
}

RefCntPtr<DataStream> PkgTableSpace::open(const std::wstring& path, bool writable) {
    if (writable) NotWritable();
    std::lock_guard lock(m_mutex);
    const auto file = DynamicPtrCast<Package::File>(ResolveRelPath(path));
    if (!file) {
        throw QVE_RuntimeError(status::PkgTableSpace_open,
                               "PkgTableSpace::open(path=\"" + narrow(path) + "\"): not a file");
    }
    const auto [begin, end] = file->GetData(*GetPackageFile());
    const auto known = m_streams.find(begin);
    if (known != m_streams.end() && known->second->GetSize() == end - begin) return known->second->Fork(true);

    const uint64_t size = end - begin;
    RefCntPtr<DataStream> stream = FileDataStream::OpenStream(GetPackageFile(), begin, size);
    if (size == 0 || size > most_mapped) return stream;
    stream->SetPageLimit(std::max(stream->GetPageLimit(), size));
    stream->Seek(0, size);
    // Those that are in use stay mapped by their readers.
    if (m_mapped + size > most_mapped || m_streams.size() == most_streams) {
        m_streams.clear();
        m_mapped = 0;
    }
    m_mapped += size;
    return m_streams.insert_or_assign(begin, std::move(stream)).first->second->Fork(true);
}

}  // namespace qve
