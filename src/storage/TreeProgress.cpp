#include "storage/TreeProgress.h"

#include "os/Path.h"
#include "system/Operator.h"

namespace qve::Package {

void TreeProgress::Count(TableSpace& space) {
    if (!m_progress) return;
    m_total = CountFiles(space, L"");
    Report();
}

uint64_t TreeProgress::CountFiles(TableSpace& space, const std::wstring& path) {
    if (!space.isdir(path)) return 1;
    uint64_t count = 0;
    for (const std::wstring& name : space.listdir(path)) count += CountFiles(space, Path::join(path, name));
    return count;
}

void TreeProgress::AddFile() {
    ++m_done;
    Report();
}

void TreeProgress::Report() const {
    if (m_progress) m_progress->SetProgress(0, 0, m_done, m_total);
}

void TreeProgress::Check() const {
    if (m_progress && m_progress->IsCancelled()) throw Operator::CancelledException();
}

}  // namespace qve::Package
