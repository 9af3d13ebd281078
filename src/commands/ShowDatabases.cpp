#include "commands/ShowDatabases.h"

#include "algebra/OperatorVisitor.h"
#include "commands/FolderWalk.h"
#include "commands/Listing.h"
#include "commands/status.h"
#include "os/Path.h"
#include "system/QuillonException.h"
#include "system/unicode.h"

namespace qve {

ShowDatabases::ShowDatabases(std::wstring path, bool cascade) : m_path(std::move(path)), m_cascade(cascade) {}

void ShowDatabases::Accept(OperatorVisitor& visitor) {
    visitor.VisitShowDatabases(*this);
}

RefCntPtr<Namespace> ShowDatabases::Execute(unsigned) {
    if (!Path::isdir(m_path)) {
        throw QVE_RuntimeError(status::ShowDatabases_path, "ShowDatabases: \"" + narrow(m_path) + "\" is no folder");
    }
    std::vector<std::wstring> names;
    std::vector<long long> sizes;
    std::vector<datetime> times;
    for (const FolderWalk::Entry& entry : FolderWalk::List(m_path, m_cascade)) {
        const std::wstring path = Path::join(m_path, entry.name);
        if (!FolderWalk::IsDatabase(path)) continue;
        datetime changed = entry.modified;
        if (!entry.directory) {
            names.push_back(entry.name);
            sizes.push_back(static_cast<long long>(entry.size));
            times.push_back(changed);
            continue;
        }
        for (const FolderWalk::Entry& file : FolderWalk::List(Path::join(path, L"SYS"), false)) {
            if (changed < file.modified) changed = file.modified;
        }
        names.push_back(entry.name);
        sizes.push_back(static_cast<long long>(FolderWalk::TotalSize(path)));
        times.push_back(changed);
    }
    Listing listing(L"DATABASES");
    listing.AddTexts(L"NAME", names);
    listing.AddNumbers(L"SIZE", sizes);
    listing.AddMoments(L"MTIME", times);
    return listing.Finish();
}

}  // namespace qve
