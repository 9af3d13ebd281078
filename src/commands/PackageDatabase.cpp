#include "commands/PackageDatabase.h"

#include "algebra/OperatorVisitor.h"
#include "algebra/ProgressCallbackImpl.h"
#include "commands/status.h"
#include "metrics/Scope.h"
#include "os/OS.h"
#include "os/Path.h"
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

void Remove(const std::wstring& path) {
    if (Path::isdir(path)) {
        OS::rmdir(path, true);
    } else if (Path::exists(path)) {
        OS::unlink(path);
    }
}

/// A path that goes at the end, unless it was kept.
class TempPath {
public:
    explicit TempPath(std::wstring path) : m_path(std::move(path)) {}
    ~TempPath() {
        try {
            if (!m_path.empty()) Remove(m_path);
        } catch (const std::exception& fault) {
            LogEntry() << "PackageDatabase: cannot remove what is left: " << fault.what();
        }
    }
    TempPath(const TempPath&) = delete;
    TempPath& operator=(const TempPath&) = delete;
    const std::wstring& Get() const { return m_path; }
    void Keep() { m_path.clear(); }

private:
    std::wstring m_path;
};

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

/// Puts the result in the place of the source; gives where the source is now.
std::wstring Swap(const std::wstring& result, const std::wstring& source) {
    std::wstring backup = FreeName(source + L".bak");
    if (OS::exchange(result, source)) {
        // At every instant there is a whole database at the path.
        OS::rename(result, backup);
    } else {
        AutoRename aside(source, backup);
        OS::rename(result, source);
        aside.Keep();
    }
    OS::sync(Path::split(source).first);
    return backup;
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
            TempPath working(FreeName(m_path + L".pkg"));
            Convert(working.Get());
            OS::rename(working.Get(), m_path);
            working.Keep();
            OS::sync(Path::split(m_path).first);
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
    std::wstring backup;
    {
        // Until the result is in place nobody may write to what it was made of.
        const Database::Transaction transaction(*simple);
        TempPath working(FreeName(source + L".pkg"));
        Convert(working.Get());
        backup = Swap(working.Get(), source);
        working.Keep();
    }
    m_database = MakeRef<SimpleDatabase>(source);
    m_reopen(m_database);
    const TempPath old(backup);  // whatever comes of removing it, the conversion is done
}

}  // namespace qve
