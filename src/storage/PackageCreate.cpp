// Writing a package.

#include <algorithm>
#include <vector>

#include "os/OS.h"
#include "os/Path.h"
#include "storage/Package.h"
#include "storage/PackageFormat.h"
#include "storage/TreeProgress.h"
#include "storage/status.h"
#include "system/QuillonException.h"
#include "system/unicode.h"

namespace qve::Package {
namespace {

class Creator {
public:
    Creator(TableSpace& source, const std::wstring& path, TreeProgress& progress)
        : m_source(source), m_progress(progress), m_file(MakeRef<DataFile>(path, true)) {}

    void Write() {
        Put(magic);
        Put(versionWritten);
        Put(~uint64_t{0});
        Put(uint64_t{0});
        const Range root = AddPath(L"");
        m_file->Flush();
        m_file->WriteAt(rootOffset, &root.first, sizeof root.first);
        m_file->WriteAt(rootOffset + sizeof root.first, &root.second, sizeof root.second);
    }

private:
    /// Writes what lies at a path, children first; gives where its node lies.
    Range AddPath(const std::wstring& path) {
        m_progress.Check();
        return m_source.isdir(path) ? AddDirectory(path) : AddFile(path);
    }

    Range AddDirectory(const std::wstring& path) {
        std::vector<std::wstring> names = m_source.listdir(path);
        std::sort(names.begin(), names.end());
        std::vector<Range> ranges;
        for (const std::wstring& name : names) ranges.push_back(AddPath(Path::join(path, name)));
        Align();
        const uint64_t begin = m_position;
        Put(directoryTag);
        Put(static_cast<uint32_t>(names.size()));
        for (size_t i = 0; i < names.size(); ++i) {
            WriteString(names[i]);
            Put(ranges[i].first);
            Put(ranges[i].second);
        }
        return {begin, m_position};
    }

    Range AddFile(const std::wstring& path) {
        Align();
        const uint64_t dataBegin = m_position;
        {
            const RefCntPtr<DataStream> data = m_source.open(path, false);
            const uint64_t size = data->GetSize();
            for (uint64_t done = 0; done < size;) {
                m_progress.Check();
                const uint64_t count = std::min({data->Seek(done, copyWindow), copyWindow, size - done});
                PutBytes(data->GetInput(0), count);
                done += count;
            }
        }
        m_source.close(path);
        const uint64_t dataEnd = m_position;
        Align();
        const uint64_t begin = m_position;
        Put(fileTag);
        Put(dataBegin);
        Put(dataEnd);
        WriteString(L"");
        m_progress.AddFile();
        return {begin, m_position};
    }

    void Align() {
        constexpr char zeros[alignment] = {};
        PutBytes(zeros, (alignment - m_position % alignment) % alignment);
    }
    void WriteString(const std::wstring& text) {
        const std::u16string units = to_utf16(text);
        Put(static_cast<uint32_t>(units.size() + 1));
        PutBytes(units.c_str(), (units.size() + 1) * sizeof units[0]);
    }
    template <class T>
    void Put(T value) {
        PutBytes(&value, sizeof value);
    }
    void PutBytes(const void* bytes, uint64_t count) {
        m_file->Write(bytes, count);
        m_position += count;
    }

    TableSpace& m_source;
    TreeProgress& m_progress;
    const RefCntPtr<DataFile> m_file;
    uint64_t m_position = 0;
};

}  // namespace

void Create(const RefCntPtr<TableSpace>& source, const std::wstring& path,
            const RefCntPtr<ProgressCallback>& progress) {
    if (Path::exists(path)) {
        throw QVE_LogicError(status::PackageCreate_exists,
                             "Creator::operator()(path=\"" + narrow(path) + "\"): File already exists.");
    }
    TreeProgress files(progress);
    files.Count(*source);
    OS::touch(path);
    struct Remover {
        const std::wstring& path;
        bool armed = true;
        ~Remover() {
            try {
                if (armed) OS::unlink(path);
            } catch (const QuillonException&) {  // what failed before is what the caller learns
            }
        }
    } remover{path};
    Creator(*source, path, files).Write();
    OS::sync(path);
    OS::sync(Path::split(Path::abspath(path)).first);
    remover.armed = false;
}

}  // namespace qve::Package
