#include "storage/CatalogJournal.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "os/Path.h"
#include "storage/Database.h"
#include "storage/status.h"
#include "system/QuillonException.h"
#include "system/unicode.h"
#include "telemetry/Logger.h"

namespace qve {

namespace {

const std::wstring& UndoFile() {
    static const std::wstring path = Database::systemSchema + L"/.undo";
    return path;
}

const std::wstring& JournalFile() {
    static const std::wstring path = Database::systemSchema + L"/.journal";
    return path;
}

/// Calls `each(kind, first, second)` for the lines "kind\tfirst[\tsecond]" of a text, which may be cut off anywhere: a
/// line without its end does not count.
template <class F>
void ForEachLine(std::string_view text, F each) {
    for (size_t end; (end = text.find('\n')) != std::string_view::npos; text.remove_prefix(end + 1)) {
        const std::string_view line = text.substr(0, end);
        if (line.size() < 3 || line[1] != '\t') continue;
        const size_t tab = std::min(line.find('\t', 2), line.size());
        each(line[0], widen(line.substr(2, tab - 2)), widen(line.substr(std::min(tab + 1, line.size()))));
    }
}

/// A path of a journal, which whoever laid out the directory may have written: it must not lead out of the space.
std::wstring Inside(std::wstring path) {
    if (path.empty() || Path::isabs(path) || Path::normpath(path) != path || path == L".." ||
        path.starts_with(L"../")) {
        throw QVE_RuntimeError(status::CatalogJournal_path,
                               "CatalogJournal: \"" + narrow(path) + "\" is no path of the database");
    }
    return path;
}

std::string Line(char kind, const std::wstring& first, const std::wstring& second = {}) {
    std::string line = {kind, '\t'};
    line += narrow(first);
    if (!second.empty()) line += '\t' + narrow(second);
    return line + '\n';
}

}  // namespace

std::string CatalogJournal::ReadFile(const std::wstring& path) const {
    std::string text;
    const RefCntPtr<DataStream> stream = m_space.open(path, false);
    while (text.size() < stream->GetSize()) {
        const uint64_t limit = stream->Seek(text.size(), 1);
        text.append(stream->GetInput(0), limit);
    }
    // A file that was being written when its process died may have its room behind it.
    text.resize(std::min(text.find('\0'), text.size()));
    return text;
}

void CatalogJournal::WriteFile(const std::wstring& path, const std::string& text) {
    if (m_space.exists(path)) m_space.unlink(path);
    m_space.create(path);
    m_space.open(path, true)->Append(text.data(), text.size());
    m_space.close(path);
}

void CatalogJournal::Note(char kind, const std::wstring& path) {
    m_made.emplace_back(kind, path);
    if (!m_durable) return;
    if (!m_space.exists(UndoFile())) m_space.create(UndoFile());
    const std::string line = Line(kind, path);
    const RefCntPtr<DataStream> stream = m_space.open(UndoFile(), true);
    stream->Resize(m_undoSize);
    stream->Append(line.data(), line.size());
    m_undoSize += line.size();
}

void CatalogJournal::AboutToCreate(const std::wstring& path) {
    Note('f', path);
}

void CatalogJournal::AboutToMakeDirectory(const std::wstring& path) {
    Note('d', path);
}

void CatalogJournal::RemoveFile(const std::wstring& path) {
    if (m_space.exists(path)) m_space.unlink(path);
}

// What cannot be removed now is a leftover that no catalog names; the change itself stands.
bool CatalogJournal::Remove(char kind, const std::wstring& path) {
    try {
        if (kind == 'd') {
            if (m_space.isdir(path)) m_space.rmdir(path);
        } else if (m_space.isfile(path)) {
            m_space.unlink(path);
        }
        return true;
    } catch (const std::exception& fault) {
        Logger::Get()->QueueMessage(std::string("CatalogJournal: ") + fault.what());
        return false;
    }
}

void CatalogJournal::LeaveUndone(const Made& left) {
    if (left.empty() || !m_durable) return;
    std::string text;
    for (const auto& [kind, path] : left) text += Line(kind, path);
    try {
        WriteFile(UndoFile(), text);
        m_space.closeall();
    } catch (const std::exception& fault) {
        Logger::Get()->QueueMessage(std::string("CatalogJournal: ") + fault.what());
    }
}

void CatalogJournal::Apply(const Changes& changes) {
    for (const auto& [from, to] : changes.renames) {
        if (m_space.exists(from)) m_space.rename(from, to);
    }
    m_space.closeall();
    Made left;
    for (const std::wstring& path : changes.unlinks) {
        if (!Remove('f', path)) left.emplace_back('f', path);
    }
    for (const std::wstring& path : changes.rmdirs) {
        if (!Remove('d', path)) left.emplace_back('d', path);
    }
    RemoveFile(UndoFile());
    m_undoSize = 0;
    m_space.closeall();
    RemoveFile(JournalFile());
    LeaveUndone(left);
}

void CatalogJournal::Commit(const Changes& changes) {
    if (m_durable) {
        std::string text;
        for (const auto& [from, to] : changes.renames) text += Line('r', from, to);
        for (const std::wstring& path : changes.unlinks) text += Line('u', path);
        for (const std::wstring& path : changes.rmdirs) text += Line('d', path);
        m_space.closeall();
        const std::wstring temporary = JournalFile() + L".temp";
        WriteFile(temporary, text);
        m_space.closeall();
        m_space.rename(temporary, JournalFile());
        m_space.closeall();
    }
    m_made.clear();
    Apply(changes);
}

void CatalogJournal::Rollback() {
    const Made made = std::exchange(m_made, {});
    m_undoSize = 0;
    try {
        m_space.closeall();
    } catch (const std::exception& fault) {
        // What could not be brought to the disk is removed now.
        Logger::Get()->QueueMessage(std::string("CatalogJournal: ") + fault.what());
    }
    Made left;
    for (auto entry = made.rbegin(); entry != made.rend(); ++entry) {
        if (!Remove(entry->first, entry->second)) left.push_back(*entry);
    }
    RemoveFile(UndoFile());
    std::reverse(left.begin(), left.end());
    LeaveUndone(left);
}

bool CatalogJournal::IsPending() const {
    return m_durable && m_space.exists(JournalFile());
}

void CatalogJournal::Recover() {
    if (!m_durable) return;
    if (IsPending()) {
        Changes changes;
        ForEachLine(ReadFile(JournalFile()), [&](char kind, std::wstring first, std::wstring second) {
            if (kind == 'r') changes.renames.emplace_back(Inside(std::move(first)), Inside(std::move(second)));
            if (kind == 'u') changes.unlinks.push_back(Inside(std::move(first)));
            if (kind == 'd') changes.rmdirs.push_back(Inside(std::move(first)));
        });
        m_space.closeall();
        Apply(changes);
        return;
    }
    RemoveFile(JournalFile() + L".temp");  // of a commit that did not come about
    if (m_space.exists(UndoFile())) {
        ForEachLine(ReadFile(UndoFile()), [&](char kind, std::wstring path, const std::wstring&) {
            m_made.emplace_back(kind, Inside(std::move(path)));
        });
        Rollback();
    }
}

}  // namespace qve
