#include "storage/Package.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "storage/PackageFormat.h"
#include "storage/status.h"
#include "system/QuilICUNormalizer.h"
#include "system/QuillonException.h"
#include "system/unicode.h"

namespace qve::Package {
namespace {

[[noreturn]] void Refuse(int status, const DataFile& file, const char* what, uint64_t offset) {
    throw QVE_RuntimeError(status, "Package::Open(path=\"" + narrow(file.GetPath()) + "\"): " + what + " at byte " +
                                       std::to_string(offset));
}

/// Reads a range of a file from its beginning on.
class InputIterator {
public:
    InputIterator(const DataFile& file, Range range) : m_file(file), m_position(range.first), m_end(range.second) {}

    void ReadBytes(uint64_t count, void* target) {
        if (count > Remaining()) Refuse(status::PackageOpen_cut, m_file, "invalid range", m_position);
        char* to = static_cast<char*>(target);
        while (count > 0) {
            if (m_used == m_buffer.size()) Fill();
            const uint64_t taken = std::min<uint64_t>(count, m_buffer.size() - m_used);
            std::memcpy(to, m_buffer.data() + m_used, taken);
            to += taken;
            m_used += taken;
            m_position += taken;
            count -= taken;
        }
    }
    template <class T>
    T Read() {
        T value;
        ReadBytes(sizeof value, &value);
        return value;
    }
    Range ReadRange() {
        const auto begin = Read<uint64_t>();
        return {begin, Read<uint64_t>()};
    }
    std::wstring ReadString() {
        const uint64_t units = Read<uint32_t>();
        if (units == 0 || units > Remaining() / sizeof(char16_t)) {
            Refuse(status::PackageOpen_cut, m_file, "invalid range", m_position);
        }
        std::u16string text(units, u'\0');
        ReadBytes(units * sizeof(char16_t), text.data());
        if (text.back() != u'\0') Refuse(status::PackageOpen_name, m_file, "text not terminated", m_position);
        text.pop_back();
        return widen(text);
    }
    uint64_t Remaining() const { return m_end - m_position; }

private:
    void Fill() {
        constexpr uint64_t block = 1 << 16;
        m_buffer.resize(std::min(block, Remaining()));
        m_file.Read(m_position, m_buffer.data(), m_buffer.size());
        m_used = 0;
    }

    const DataFile& m_file;
    uint64_t m_position;
    const uint64_t m_end;
    std::vector<char> m_buffer;
    size_t m_used = 0;
};

class Opener {
public:
    Opener(const DataFile& file, Read read) : m_file(file), m_read(read) {}

    /// A node that lies, with all that is below it, at `lowest` or behind.
    RefCntPtr<Node> ParseNode(Range range, uint64_t lowest, unsigned depth) const;
    RefCntPtr<File> ParseFile(Range range, uint64_t lowest, InputIterator& input) const;

private:
    RefCntPtr<Node> ParseDirectory(Range range, uint64_t lowest, unsigned depth, InputIterator& input) const;
    void CheckName(const std::wstring& name, uint64_t offset) const;

    const DataFile& m_file;
    const Read m_read;
};

RefCntPtr<Node> Opener::ParseNode(Range range, uint64_t lowest, unsigned depth) const {
    if (range.first > range.second || range.second > m_file.GetSize() || range.first < lowest) {
        Refuse(status::PackageOpen_range, m_file, "invalid range", range.first);
    }
    if (depth > maxDepth) Refuse(status::PackageOpen_depth, m_file, "directories too deep", range.first);
    if (m_read == Read::directories && depth > 0 && range.second - range.first == plainFileNode) {
        return MakeRef<File>(range, lowest);
    }
    InputIterator input(m_file, range);
    const auto tag = input.Read<uint32_t>();
    if (tag == fileTag && depth > 0) return ParseFile(range, lowest, input);
    if (tag == directoryTag) return ParseDirectory(range, lowest, depth, input);
    Refuse(status::PackageOpen_type, m_file, "bad node type", range.first);
}

RefCntPtr<File> Opener::ParseFile(Range range, uint64_t lowest, InputIterator& input) const {
    const Range data = input.ReadRange();
    std::wstring name = input.ReadString();
    if (input.Remaining() != 0) Refuse(status::PackageOpen_fileRest, m_file, "node not consumed", range.first);
    if (data.first > data.second || data.second > range.first || data.first < lowest) {
        Refuse(status::PackageOpen_data, m_file, "invalid range", range.first);
    }
    return MakeRef<File>(range, data, std::move(name));
}

RefCntPtr<Node> Opener::ParseDirectory(Range range, uint64_t lowest, unsigned depth, InputIterator& input) const {
    std::vector<std::pair<Range, std::wstring>> entries;
    for (auto count = input.Read<uint32_t>(); count != 0; --count) {
        std::wstring name = input.ReadString();
        CheckName(name, range.first);
        const Range child = input.ReadRange();
        entries.emplace_back(child, std::move(name));
    }
    if (input.Remaining() != 0) Refuse(status::PackageOpen_directoryRest, m_file, "node not consumed", range.first);

    // As they lie in the file, whatever the order of the names: each begins behind the one before.
    std::sort(entries.begin(), entries.end());
    Directory::Children children;
    for (auto& [child, name] : entries) {
        if (child.second > range.first) Refuse(status::PackageOpen_range, m_file, "invalid range", range.first);
        RefCntPtr<Node> node = ParseNode(child, lowest, depth + 1);
        if (!children.emplace(std::move(name), std::move(node)).second) {
            Refuse(status::PackageOpen_name, m_file, "a name stands twice", range.first);
        }
        lowest = child.second;
    }
    return MakeRef<Directory>(range, std::move(children));
}

// A package may come from anywhere; expanded, its names must not lead out of their directory.
void Opener::CheckName(const std::wstring& name, uint64_t offset) const {
    const bool bad = name.empty() || name == L"." || name == L".." ||
                     std::any_of(name.begin(), name.end(), [](wchar_t c) { return c == L'/' || c == L'\0'; });
    if (bad) Refuse(status::PackageOpen_name, m_file, "no name of a file", offset);
}

struct Header {
    uint64_t magic;
    uint32_t version;
    Range root;
};

Header ReadHeader(const DataFile& file) {
    InputIterator input(file, {0, headerSize});
    Header header;
    header.magic = input.Read<uint64_t>();
    header.version = input.Read<uint32_t>();
    header.root = input.ReadRange();
    return header;
}

bool IsKnown(uint32_t version) {
    return version == 1 || version == 2;
}

}  // namespace

const Range& File::GetData(const DataFile& package) {
    if (m_data == unread) {
        InputIterator input(package, GetRange());
        if (input.Read<uint32_t>() != fileTag) {
            Refuse(status::PackageOpen_type, package, "bad node type", GetRange().first);
        }
        const RefCntPtr<File> read = Opener(package, Read::all).ParseFile(GetRange(), m_lowest, input);
        m_data = read->m_data;
        m_name = read->m_name;
    }
    return m_data;
}

Directory::Directory(Range range, Children children) : Node(range), m_children(std::move(children)) {
    for (const auto& [name, child] : m_children) {
        std::wstring composed = QuilICU::NormaliseWide(name);
        if (composed != name) m_composed.emplace(std::move(composed), child);
    }
}

RefCntPtr<Node> Directory::Find(const std::wstring& name) const {
    auto found = m_children.find(name);
    if (found != m_children.end()) return found->second;
    const std::wstring composed = QuilICU::NormaliseWide(name);
    found = m_children.find(composed);
    if (found != m_children.end()) return found->second;
    found = m_composed.find(composed);
    return found == m_composed.end() ? nullptr : found->second;
}

RefCntPtr<Node> Open(const RefCntPtr<DataFile>& file, Read read) {
    if (file->GetSize() < headerSize) {
        throw QVE_RangeError(status::PackageOpen_short, "File is not a Corvane database: " + narrow(file->GetPath()));
    }
    const Header header = ReadHeader(*file);
    if (header.magic != magic) Refuse(status::PackageOpen_magic, *file, "bad magic number", 0);
    if (!IsKnown(header.version)) Refuse(status::PackageOpen_version, *file, "bad version", sizeof header.magic);
    return Opener(*file, read).ParseNode(header.root, headerSize, 0);
}

bool IsPackage(const RefCntPtr<DataFile>& file) {
    if (file->GetSize() < headerSize) return false;
    const Header header = ReadHeader(*file);
    return header.magic == magic && IsKnown(header.version);
}

bool IsPackage(const std::wstring& path) {
    try {
        return IsPackage(MakeRef<DataFile>(path, false));
    } catch (const QuillonException&) {
        return false;
    }
}

}  // namespace qve::Package
