// Transactions of a SimpleDatabase, and how it keeps up with those of others.

#include <utility>

#include "metrics/Scope.h"
#include "os/BootNumber.h"
#include "os/Path.h"
#include "storage/CatalogFiles.h"
#include "storage/PropertyFile.h"
#include "storage/SimpleDatabaseImpl.h"
#include "storage/UnknownFiles.h"
#include "storage/status.h"
#include "system/QuillonException.h"
#include "system/unicode.h"
#include "telemetry/LogEntry.h"
#include "telemetry/Logger.h"

namespace qve {

namespace {

const wchar_t lockFile[] = L".database.lock";

}  // namespace

SimpleDatabase::Impl::Impl(RefCntPtr<TableSpace> rootSpace, bool isDurable)
    : root(std::move(rootSpace), isDurable), durable(isDurable) {}

SimpleDatabase::Impl::~Impl() = default;

void SimpleDatabase::Impl::OpenLock(bool create) {
    if (durable && !lock.IsOpen()) lock = FileLock(Path::join(root.space->root(), lockFile), create);
}

void SimpleDatabase::Impl::RequireDatabase() {
    if (root.space->isfile(databaseTypeFile) && root.space->isdir(systemSchema)) return;
    throw QVE_RuntimeError(status::SimpleDatabase_LoadCatalog,
                           "SimpleDatabase::LoadCatalog: no database in \"" + narrow(root.space->root()) + "\"");
}

bool SimpleDatabase::Impl::OwnsTransaction() const {
    return transaction && transaction->owner == std::this_thread::get_id();
}

std::shared_ptr<const Catalog> SimpleDatabase::Impl::View() {
    if (OwnsTransaction() && transaction->working) return transaction->working;
    Refresh();
    return committed;
}

Catalog& SimpleDatabase::Impl::Work() {
    if (!transaction->working) {
        RequireDatabase();
        Refresh();
        transaction->working = std::make_shared<Catalog>(*committed);
    }
    return *transaction->working;
}

void SimpleDatabase::Impl::Refresh() {
    if (committed && !lock.IsOpen()) return;
    if (committed && lock.ReadCounter() == generation) return;
    Load();
}

void SimpleDatabase::Impl::Load() {
    committed.reset();
    RequireDatabase();
    // The file may be another one by now: the database was dropped and made anew.
    if (!transaction && !lock.IsCurrent()) {
        lock = FileLock();
        owner.reset();
    }
    OpenLock(true);
    for (;;) {
        if (lock.IsOpen()) lock.Lock(catalogSlot, false);
        try {
            // A commit that is under way holds the slot; this one was left behind by a process that died.
            const bool interrupted = !transaction && root.journal.IsPending() && lock.IsWritable();
            if (!interrupted) {
                root.space->closeall();
                guids.clear();
                usrprops read = ReadPropertyFile(*root.space, databaseTypeFile);
                auto catalog = std::make_shared<Catalog>(ReadCatalog(*root.space));
                if (lock.IsOpen()) {
                    generation = lock.ReadCounter();
                    lock.Unlock(catalogSlot);
                }
                properties = std::move(read);
                committed = std::move(catalog);
                return;
            }
        } catch (...) {
            if (lock.IsOpen()) lock.Unlock(catalogSlot);
            throw;
        }
        lock.Unlock(catalogSlot);
        lock.Lock(writerSlot, true);
        Recover();
        lock.Unlock(writerSlot);
    }
}

// With the writer's slot held, what lies there unfinished belongs to nobody any more.
void SimpleDatabase::Impl::Recover() {
    if (!durable || !lock.IsWritable()) return;
    lock.Lock(catalogSlot, true);
    try {
        root.journal.Recover();
        lock.Unlock(catalogSlot);
    } catch (...) {
        lock.Unlock(catalogSlot);
        throw;
    }
}

void SimpleDatabase::Impl::Begin() {
    std::unique_lock guard(mutex);
    if (OwnsTransaction()) {
        ++transaction->depth;
        return;
    }
    transactionEnded.wait(guard, [this] { return !transaction; });
    if (lock.IsOpen() && !lock.IsCurrent()) {
        // The database was dropped, and perhaps made anew.
        lock = FileLock();
        owner.reset();
        committed.reset();
    }
    OpenLock(root.space->isfile(databaseTypeFile));
    if (durable && lock.IsOpen() && !lock.IsWritable()) {
        throw QVE_RuntimeError(
            status::SimpleDatabase_Transaction,
            "SimpleDatabase::BeginTransaction: \"" + narrow(root.space->root()) + "\" can only be read");
    }
    if (lock.IsOpen() && !owner) owner = DatabaseOwner::Take(lock, root.space->root());
    transaction.emplace(std::this_thread::get_id());
    try {
        if (lock.IsOpen()) {
            // Other threads go on reading while this one waits for another process.
            guard.unlock();
            lock.Lock(writerSlot, true);
            guard.lock();
            Recover();
            Refresh();
        }
    } catch (...) {
        if (!guard.owns_lock()) guard.lock();
        Close(guard);
        throw;
    }
}

bool SimpleDatabase::Impl::MayHaveOrphans() {
    std::lock_guard guard(mutex);
    if (!durable || !lock.IsOpen() || transaction->depth > 1) return false;
    if (BootNumber() != 0 && lock.ReadBoot() == BootNumber()) return false;
    // A catalog that lost rows does not name all that is worth keeping.
    return View()->whole;
}

void SimpleDatabase::Impl::Close(std::unique_lock<std::recursive_mutex>& guard) {
    if (lock.IsOpen()) lock.Unlock(writerSlot);
    root.changes = {};
    for (auto& [schema, area] : areas) area->changes = {};
    transaction.reset();
    guard.unlock();
    transactionEnded.notify_all();
}

void SimpleDatabase::Impl::End() {
    std::unique_lock guard(mutex);
    if (!OwnsTransaction()) {
        throw QVE_LogicError(status::SimpleDatabase_Transaction, "SimpleDatabase::EndTransaction: no transaction");
    }
    if (transaction->depth > 1) {
        --transaction->depth;
        return;
    }
    guard.unlock();
    if (transaction->failed) {
        Rollback();
        throw QVE_RuntimeError(status::SimpleDatabase_Transaction,
                               "SimpleDatabase::EndTransaction: a part of the transaction was rolled back");
    }
    guard.lock();
    try {
        Commit();
    } catch (...) {
        guard.unlock();
        Rollback();
        throw;
    }
    Close(guard);
}

void SimpleDatabase::Impl::CloseAllSpaces() {
    root.space->closeall();
    for (auto& [schema, area] : areas) area->space->closeall();
}

void SimpleDatabase::Impl::Commit() {
    MappedFile::CheckCuts(transaction->cuts);
    CatalogJournal::Changes& changes = root.changes;
    if (transaction->properties) {
        const std::wstring temporary = databaseTypeFile + extTempFile;
        if (!root.space->exists(temporary)) {
            root.journal.AboutToCreate(temporary);
            root.space->create(temporary);
        }
        WritePropertyFile(*root.space, temporary, *transaction->properties);
        changes.renames.emplace_back(temporary, databaseTypeFile);
    }
    if (transaction->working) {
        const std::wstring suffix = L"." + std::to_wstring(generation + 1);
        for (auto& rename : WriteCatalog(*root.space, root.journal, *transaction->working, suffix)) {
            changes.renames.push_back(std::move(rename));
        }
    }
    CloseAllSpaces();
    for (auto& [schema, area] : areas) area->journal.Commit(area->changes);
    if (changes.renames.empty() && changes.unlinks.empty() && changes.rmdirs.empty()) return;

    if (lock.IsOpen()) lock.Lock(catalogSlot, true);
    try {
        root.journal.Commit(changes);
        for (const auto& [from, to] : changes.renames) guids.erase({root.space.get(), to});
        for (const std::wstring& path : changes.unlinks) guids.erase({root.space.get(), path});
        if (lock.IsOpen()) lock.WriteCounter(++generation);
    } catch (...) {
        if (lock.IsOpen()) lock.Unlock(catalogSlot);
        throw;
    }
    if (lock.IsOpen()) lock.Unlock(catalogSlot);
    if (transaction->properties) properties = std::move(*transaction->properties);
    if (transaction->working) {
        transaction->working->schemas.ClearChanged();
        transaction->working->tables.ClearChanged();
        transaction->working->columns.ClearChanged();
        committed = std::move(transaction->working);
    }
}

void SimpleDatabase::Impl::Rollback() {
    std::unique_lock guard(mutex);
    if (!OwnsTransaction()) return;
    if (transaction->depth > 1) {
        --transaction->depth;
        transaction->failed = true;
        return;
    }
    // A rollback runs while something else already failed. What it cannot do, the next writer does.
    try {
        TakeBack();
    } catch (const std::exception& fault) {
        Logger::Get()->QueueMessage(std::string("SimpleDatabase::RollbackTransaction: ") + fault.what());
    }
    Close(guard);
}

void SimpleDatabase::Impl::TakeBack() {
    for (auto& [schema, area] : areas) area->journal.Rollback();
    if (!root.journal.IsPending()) {
        root.journal.Rollback();
        return;
    }
    // After a commit that stopped in the middle the journal says what to do, not the list of what was made.
    committed.reset();
    Recover();
    if (lock.IsOpen()) lock.WriteCounter(++generation);
}

void SimpleDatabase::BeginTransaction() {
    Metrics::Scope scope("SimpleDatabase::BeginTransaction");
    m_impl->Begin();
    SweepOrphans();
}

// What a process leaves that is killed stands on the list of its transaction. That list is not synced, so when the
// machine itself has gone down since the last write, files may be there without it.
void SimpleDatabase::SweepOrphans() {
    try {
        if (!m_impl->MayHaveOrphans()) return;
        const std::vector<std::wstring> removed = RemoveOrphans(*this);
        if (!removed.empty()) {
            LogEntry() << "SimpleDatabase: removed " << removed.size() << " files and directories in \""
                       << narrow(GetRoot()) << "\" that a machine which went down left, \"" << narrow(removed.front())
                       << "\" first";
        }
        std::lock_guard guard(m_impl->mutex);
        m_impl->root.space->closeall();
        m_impl->lock.WriteBoot(BootNumber());
    } catch (const std::exception& fault) {
        // They harm nobody. The next transaction tries again.
        LogEntry() << "SimpleDatabase::SweepOrphans: " << fault.what();
    }
}

void SimpleDatabase::EndTransaction() {
    Metrics::Scope scope("SimpleDatabase::EndTransaction");
    m_impl->End();
}

void SimpleDatabase::RollbackTransaction() {
    Metrics::Scope scope("SimpleDatabase::RollbackTransaction");
    m_impl->Rollback();
}

}  // namespace qve
