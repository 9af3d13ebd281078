#include "commands/ShowFolder.h"

#include "algebra/OperatorVisitor.h"
#include "commands/FolderWalk.h"
#include "commands/Listing.h"
#include "commands/status.h"
#include "os/OS.h"
#include "os/Path.h"
#include "system/QuillonException.h"
#include "system/unicode.h"

namespace qve {

ShowFolder::ShowFolder(std::wstring path, std::wstring like, unsigned options)
    : m_path(std::move(path)), m_like(std::move(like)), m_options(options) {}

void ShowFolder::Accept(OperatorVisitor& visitor) {
    visitor.VisitShowFolder(*this);
}

RefCntPtr<Namespace> ShowFolder::Execute(unsigned) {
    if (!Path::isdir(m_path)) {
        throw QVE_RuntimeError(status::ShowFolder_path, "ShowFolder: \"" + narrow(m_path) + "\" is no folder");
    }
    return Enumerate();
}

bool ShowFolder::Matches(std::wstring_view name) const {
    if (m_like.empty()) return true;
    // Greedy, with a way back to the last "%" only, which is enough: linear in memory, no recursion.
    constexpr size_t none = ~size_t{0};
    size_t at = 0, pattern = 0, afterPercent = none, resume = 0;
    while (at < name.size()) {
        const bool escaped = pattern + 1 < m_like.size() && m_like[pattern] == L'\\';
        if (pattern < m_like.size() && m_like[pattern] == L'%') {
            afterPercent = ++pattern;
            resume = at;
        } else if (pattern < m_like.size() && (escaped ? m_like[pattern + 1] == name[at]
                                                       : m_like[pattern] == L'_' || m_like[pattern] == name[at])) {
            pattern += escaped ? 2 : 1;
            ++at;
        } else if (afterPercent != none) {
            pattern = afterPercent;
            at = ++resume;
        } else {
            return false;
        }
    }
    while (pattern < m_like.size() && m_like[pattern] == L'%') ++pattern;
    return pattern == m_like.size();
}

long long ShowFolder::GetCount(const std::wstring& name, bool directory) const {
    return directory ? static_cast<long long>(OS::listdir(Path::join(m_path, name)).size()) : -1;
}

RefCntPtr<Namespace> ShowFolder::Enumerate() const {
    std::vector<std::wstring> names, types;
    std::vector<long long> sizes, entries;
    std::vector<datetime> times;
    for (const FolderWalk::Entry& entry : FolderWalk::List(m_path, m_options & cascade)) {
        if (!Matches(Path::split(entry.name).second)) continue;
        const bool database = entry.directory && FolderWalk::IsDatabase(Path::join(m_path, entry.name));
        names.push_back(entry.name);
        types.push_back(database ? L"database" : entry.directory ? L"folder" : L"file");
        sizes.push_back(entry.directory ? -1 : static_cast<long long>(entry.size));
        times.push_back(entry.modified);
        if (m_options & counts) entries.push_back(GetCount(entry.name, entry.directory));
    }
    Listing listing(L"FOLDER");
    listing.AddTexts(L"NAME", names);
    listing.AddTexts(L"TYPE", types);
    listing.AddNumbers(L"SIZE", sizes);
    listing.AddMoments(L"MTIME", times);
    if (m_options & counts) listing.AddNumbers(L"COUNT", entries);
    return listing.Finish();
}

}  // namespace qve
