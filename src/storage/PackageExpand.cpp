// Writing the tree of a package out.

#include <algorithm>

#include "os/Path.h"
#include "storage/Package.h"
#include "storage/PkgTableSpace.h"
#include "storage/TreeProgress.h"
#include "storage/status.h"
#include "system/QuillonException.h"
#include "system/unicode.h"

namespace qve::Package {
namespace {

class Expander {
public:
    Expander(TableSpace& target, TableSpace& source, TreeProgress& progress)
        : m_target(target), m_source(source), m_progress(progress) {}

    void Copy(const std::wstring& path) {
        m_progress.Check();
        if (!m_source.isdir(path)) return CopyFile(path);
        // Only the root may be there already.
        if (!path.empty() || !m_target.exists(path)) m_target.mkdir(path);
        for (const std::wstring& name : m_source.listdir(path)) Copy(Path::join(path, name));
    }

private:
    void CopyFile(const std::wstring& path) {
        if (m_target.exists(path)) {
            throw QVE_RuntimeError(status::PackageExpand_exists,
                                   "Expander::CopyFile(path=\"" + narrow(path) + "\"): File already exists.");
        }
        m_target.create(path);
        {
            const RefCntPtr<DataStream> from = m_source.open(path, false);
            const RefCntPtr<DataStream> to = m_target.open(path, true);
            const uint64_t size = from->GetSize();
            for (uint64_t done = 0; done < size;) {
                m_progress.Check();
                const uint64_t count = std::min({from->Seek(done, copyWindow), copyWindow, size - done});
                to->Append(from->GetInput(0), count);
                done += count;
            }
        }
        m_source.close(path);
        m_target.close(path);
        m_progress.AddFile();
    }

    TableSpace& m_target;
    TableSpace& m_source;
    TreeProgress& m_progress;
};

}  // namespace

void Expand(const RefCntPtr<TableSpace>& target, const RefCntPtr<TableSpace>& source,
            const RefCntPtr<ProgressCallback>& progress) {
    TreeProgress files(progress);
    files.Count(*source);
    Expander(*target, *source, files).Copy(L"");
    target->closeall();
}

void Expand(const RefCntPtr<TableSpace>& target, const std::wstring& path,
            const RefCntPtr<ProgressCallback>& progress) {
    Expand(target, MakeRef<PkgTableSpace>(path), progress);
}

}  // namespace qve::Package
