#include "commands/DropDatabase.h"

#include "algebra/OperatorVisitor.h"
#include "commands/status.h"
#include "metrics/Scope.h"
#include "os/OS.h"
#include "os/Path.h"
#include "storage/Package.h"
#include "storage/SimpleDatabase.h"
#include "system/QuillonException.h"
#include "system/unicode.h"
#include "telemetry/Logger.h"

namespace qve {

DropDatabase::DropDatabase(std::wstring path, bool ifexists, bool cascade, std::wstring lostAndFound)
    : m_path(std::move(path)), m_ifexists(ifexists), m_cascade(cascade), m_lostAndFound(std::move(lostAndFound)) {}

void DropDatabase::Accept(OperatorVisitor& visitor) {
    visitor.VisitDropDatabase(*this);
}

bool DropDatabase::DatabaseExists() const {
    return Path::exists(m_path);
}

RefCntPtr<Namespace> DropDatabase::Execute(unsigned) {
    Metrics::Scope scope("DropDatabase::Execute");
    if (m_ifexists && !DatabaseExists()) return nullptr;
    if (Path::isfile(m_path)) {
        if (Package::IsPackage(m_path)) {
            OS::unlink(m_path);
        } else {
            MoveToLostAndFound();
        }
    } else {
        MakeRef<SimpleDatabase>(m_path)->DropDatabase(m_cascade);
    }
    return nullptr;
}

void DropDatabase::MoveToLostAndFound() const {
    if (m_lostAndFound.empty()) {
        throw QVE_RuntimeError(status::DropDatabase_file,
                               "DropDatabase: \"" + narrow(m_path) + "\" is a file and no database");
    }
    if (!Path::exists(m_lostAndFound)) OS::mkdir(m_lostAndFound, false);
    std::wstring target;
    for (unsigned n = 1; target.empty() || Path::exists(target); ++n) {
        target = Path::join(m_lostAndFound, L"database_" + std::to_wstring(n));
    }
    Logger::Get()->QueueMessage(L"DropDatabase: \"" + m_path + L"\" is not a packaged database, moving to \"" + target +
                                L"\"");
    OS::rename(m_path, target);
}

}  // namespace qve
