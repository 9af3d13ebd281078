// A SimpleDatabase as one file.

#include <algorithm>

#include "metrics/Scope.h"
#include "storage/DirectoryTableSpace.h"
#include "storage/Package.h"
#include "storage/PkgTableSpace.h"
#include "storage/ReadOnlyTableSpace.h"
#include "storage/SimpleDatabaseImpl.h"
#include "storage/WritableTableSpace.h"

namespace qve {

namespace {

/// The files of a database while others go on reading it: every step is taken under the database's lock. What the
/// system keeps for itself, such as the journal, is no part of the database.
class SnapshotSpace final : public ReadOnlyTableSpace {
public:
    SnapshotSpace(SimpleDatabase& database, TableSpace& space, std::recursive_mutex& mutex)
        : m_database(database), m_space(space), m_mutex(mutex) {}

    const std::wstring& root() const override {
        std::lock_guard guard(m_mutex);
        return m_space.root();
    }
    std::vector<std::wstring> listdir(const std::wstring& path) const override {
        std::lock_guard guard(m_mutex);
        std::vector<std::wstring> names = m_space.listdir(path);
        std::erase_if(names, [](const std::wstring& name) {
            return name.front() == L'.' && name != SimpleDatabase::databaseTypeFile;
        });
        return names;
    }
    bool exists(const std::wstring& path) const override {
        std::lock_guard guard(m_mutex);
        return m_space.exists(path);
    }
    bool isfile(const std::wstring& path) const override {
        std::lock_guard guard(m_mutex);
        return m_space.isfile(path);
    }
    bool isdir(const std::wstring& path) const override {
        std::lock_guard guard(m_mutex);
        return m_space.isdir(path);
    }
    RefCntPtr<DataStream> open(const std::wstring& path, bool writable) override {
        if (writable) NotWritable();
        return m_database.OpenStream(m_space, path, false);
    }
    void close(const std::wstring& path) override {
        std::lock_guard guard(m_mutex);
        m_space.close(path);
    }

private:
    SimpleDatabase& m_database;
    TableSpace& m_space;
    std::recursive_mutex& m_mutex;
};

}  // namespace

bool SimpleDatabase::IsPackaged() const {
    const auto* space = dynamic_cast<const WritableTableSpace*>(m_impl->root.space.get());
    return space && dynamic_cast<const PkgTableSpace*>(space->GetBase().get());
}

void SimpleDatabase::WithSnapshot(const std::function<void(const RefCntPtr<TableSpace>&)>& copy) {
    {
        std::lock_guard guard(m_impl->mutex);
        m_impl->RequireDatabase();
    }
    // Nobody else may write meanwhile. Where nobody can, there is nothing to keep away.
    std::optional<Transaction> transaction;
    if (!m_impl->lock.IsOpen() || m_impl->lock.IsWritable()) transaction.emplace(*this);
    copy(MakeRef<SnapshotSpace>(*this, *m_impl->root.space, m_impl->mutex));
    if (transaction) transaction->Commit();
}

void SimpleDatabase::PackageDatabase(const std::wstring& path, const RefCntPtr<ProgressCallback>& progress) {
    Metrics::Scope scope("SimpleDatabase::PackageDatabase");
    WithSnapshot([&](const RefCntPtr<TableSpace>& files) { Package::Create(files, path, progress); });
}

void SimpleDatabase::UnpackageDatabase(const std::wstring& path, const RefCntPtr<ProgressCallback>& progress) {
    Metrics::Scope scope("SimpleDatabase::UnpackageDatabase");
    WithSnapshot([&](const RefCntPtr<TableSpace>& files) {
        Package::Expand(MakeRef<DirectoryTableSpace>(path), files, progress);
    });
}

}  // namespace qve
