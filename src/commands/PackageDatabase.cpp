#include "commands/PackageDatabase.h"

#include "algebra/OperatorVisitor.h"
#include "algebra/ProgressCallbackImpl.h"
#include "commands/status.h"
#include "metrics/Scope.h"
#include "os/OS.h"
#include "os/Path.h"
#include "os/WorkFolder.h"
#include "storage/SimpleDatabase.h"
#include "system/QuillonException.h"
#include "telemetry/LogEntry.h"

namespace qve {
namespace {

std::wstring FreeName(const std::wstring& wanted) {
    std::wstring name = wanted;
    for (unsigned n = 1; Path::exists(name); ++n) name = wanted + L"." + std::to_wstring(n);
    return name;
}

/// A rename that is taken back at the end, unless it was kept.
class AutoRename {
public:
    AutoRename(std::wstring from, std::wstring to) : m_from(std::move(from)), m_to(std::move(to)) {
        OS::rename(m_from, m_to);
    }
    ~AutoRename() {
        try {
            if (!m_to.empty()) OS::rename(m_to, m_from);
        } catch (const std::exception& fault) {
            LogEntry() << "PackageDatabase: cannot move the database back: " << fault.what();
        }
    }
    AutoRename(const AutoRename&) = delete;
    AutoRename& operator=(const AutoRename&) = delete;
    void Keep() { m_to.clear(); }

private:
    const std::wstring m_from;
    std::wstring m_to;
};

/// The directory in which a path lies.
std::wstring FolderOf(const std::wstring& path) {
    const std::wstring folder = Path::split(path).first;
    return folder.empty() ? L"." : folder;
}

/// Where a conversion is written before it gets its place. It goes with the work folder, also when the process is
/// killed.
std::wstring WorkingName(const WorkFolder& work, const std::wstring& path) {
    return Path::join(work.GetPath(), Path::split(path).second + L".pkg");
}

/// Puts the result in the place of the source; gives where the source is now.
std::wstring Swap(const std::wstring& result, const std::wstring& source) {
    // At every instant there is a whole database at the path.
    if (OS::exchange(result, source)) return result;
    // For a moment the source has this name only, so it must be one that nobody takes for a dead process's.
    std::wstring backup = FreeName(source + L".bak");
    AutoRename aside(source, backup);
    OS::rename(result, source);
    aside.Keep();
    return backup;
}

void Remove(const std::wstring& path) {
    try {
        if (Path::isdir(path)) {
            OS::rmdir(path, true);
        } else {
            OS::unlink(path);
        }
    } catch (const std::exception& fault) {
        // Whatever comes of it, the conversion is done.
        LogEntry() << "PackageDatabase: cannot remove what is left: " << fault.what();
    }
}

}  // namespace

PackageDatabase::PackageDatabase(RefCntPtr<Database> database, bool pack, std::wstring path, Reopen reopen)
    : m_database(std::move(database)),
      m_pack(pack),
      m_path(std::move(path)),
      m_reopen(std::move(reopen)),
      m_progress(MakeRef<ProgressCallbackImpl>()) {}

void PackageDatabase::Accept(OperatorVisitor& visitor) {
    visitor.VisitPackageDatabase(*this);
}

RefCntPtr<Namespace> PackageDatabase::Execute(unsigned) {
    Metrics::Scope scope("PackageDatabase::Execute");
    const wchar_t* const what = m_pack ? L"package" : L"unpackage";
    LogEntry() << "PackageDatabase: " << what << " database to \"" << m_path << "\"";
    try {
        if (m_path.empty()) {
            LogEntry() << "PackageDatabase: in-place " << what << " of \"" << m_database->GetRoot() << "\"";
            ConvertInPlace();
        } else {
            const WorkFolder work(FolderOf(m_path));
            const std::wstring working = WorkingName(work, m_path);
            Convert(working);
            OS::rename(working, m_path);
            OS::sync(FolderOf(m_path));
        }
    } catch (const std::exception& fault) {
        const int error = OS::get_errno();
        LogEntry() << "PackageDatabase: failed, src=\"" << m_database->GetRoot() << "\", dst=\"" << m_path
                   << "\", errno=" << error << ", error=\"" << OS::strerror(error) << "\", exception=\"" << fault.what()
                   << "\"";
        throw;
    }
    LogEntry() << "PackageDatabase: finished";
    return nullptr;
}

void PackageDatabase::Convert(const std::wstring& target) const {
    if (m_pack) {
        m_database->PackageDatabase(target, m_progress);
    } else {
        m_database->UnpackageDatabase(target, m_progress);
    }
}

void PackageDatabase::ConvertInPlace() {
    const auto simple = DynamicPtrCast<SimpleDatabase>(m_database);
    if (!simple || simple->GetPath().empty()) {
        throw QVE_RuntimeError(status::PackageDatabase_simple, "in-place package only supported for SimpleDatabase");
    }
    const std::wstring source = simple->GetPath();
    if (m_pack ? !Path::isdir(source) : !Path::isfile(source)) {
        throw QVE_RuntimeError(status::PackageDatabase_source, m_pack
                                                                   ? "in-place package only supported for directories"
                                                                   : "in-place package only supported for files");
    }
    const WorkFolder work(FolderOf(source));
    std::wstring old;
    {
        // Until the result is in place nobody may write to what it was made of.
        const Database::Transaction transaction(*simple);
        const std::wstring working = WorkingName(work, source);
        Convert(working);
        old = Swap(working, source);
    }
    m_database = MakeRef<SimpleDatabase>(source);
    m_reopen(m_database);
    OS::sync(FolderOf(source));
    Remove(old);
}

}  // namespace qve
