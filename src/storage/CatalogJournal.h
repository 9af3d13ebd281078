#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "storage/TableSpace.h"

namespace qve {

/// What makes a change of many files one step, also when the process dies in the middle.
///
/// While a transaction runs, a list of the files and directories that it makes lies in "SYS/.undo"; should the process
/// die, the next one removes them. To commit, everything new is brought to the disk, then the list of what is left to
/// do (files that take the place of others, files that are no longer needed) is put in place as "SYS/.journal" by one
/// rename. From then on the transaction has happened: should the process die, the next one does what the list says. One
/// thread at a time.
class CatalogJournal {
public:
    /// The changes that a commit makes to what was there before.
    struct Changes {
        std::vector<std::pair<std::wstring, std::wstring>> renames;  // from, to
        std::vector<std::wstring> unlinks;
        std::vector<std::wstring> rmdirs;
    };

    /// Without `durable` nothing is written down: for spaces that do not outlive the process.
    CatalogJournal(TableSpace& space, bool durable) : m_space(space), m_durable(durable) {}

    /// Notes what is about to be made.
    void AboutToCreate(const std::wstring& path);
    void AboutToMakeDirectory(const std::wstring& path);

    /// Does the changes, all or none. Everything that the transaction wrote through other spaces must be closed.
    void Commit(const Changes& changes);
    /// Removes what was made since the last Commit or Rollback.
    void Rollback();
    /// Whether a commit was interrupted, so that what lies in the space is neither old nor new.
    bool IsPending() const;
    /// Finishes an interrupted commit, or takes an interrupted transaction back. Only with no other writer at work.
    /// Throws QVE_RuntimeError (status::CatalogJournal_path) when a list names what is not in the space.
    void Recover();

private:
    using Made = std::vector<std::pair<char, std::wstring>>;  // 'f' or 'd' and the path, in order

    void Note(char kind, const std::wstring& path);
    std::string ReadFile(const std::wstring& path) const;
    void WriteFile(const std::wstring& path, const std::string& text);
    void Apply(const Changes& changes);
    /// False when it could not be removed now.
    bool Remove(char kind, const std::wstring& path);
    /// Leaves a list of what could not be removed for the next Recover.
    void LeaveUndone(const Made& left);
    void RemoveFile(const std::wstring& path);

    TableSpace& m_space;
    const bool m_durable;
    Made m_made;
    uint64_t m_undoSize = 0;  // bytes written to the undo file
};

}  // namespace qve
