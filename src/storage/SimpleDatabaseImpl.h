#pragma once

#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

#include "os/FileLock.h"
#include "os/MappedFile.h"
#include "storage/Catalog.h"
#include "storage/CatalogJournal.h"
#include "storage/DatabaseOwner.h"
#include "storage/SimpleDatabase.h"

namespace qve {

/// The state of a SimpleDatabase.
///
/// `mutex` guards everything here and every call on a table space. It is held for single steps only. A transaction
/// spans many: it is owned by one thread, works on a copy of the catalog that only its owner sees, and takes the
/// committed one's place at its end. Between processes and between SimpleDatabase objects two locks on a file in the
/// root do the same: one slot is held by the writer for the whole transaction, the other exclusively while a commit
/// moves files and shared while the catalog is read. The counter of that file changes with every commit, so that the
/// others notice. Only one process writes: see DatabaseOwner.
class SimpleDatabase::Impl {
public:
    static constexpr unsigned writerSlot = 0;
    static constexpr unsigned catalogSlot = 1;

    /// A space in which a transaction may make files.
    struct Area {
        Area(RefCntPtr<TableSpace> tableSpace, bool durable) : space(std::move(tableSpace)), journal(*space, durable) {}

        RefCntPtr<TableSpace> space;
        CatalogJournal journal;
        CatalogJournal::Changes changes;  // of the open transaction
    };

    /// A transaction that is open.
    struct OpenTransaction {
        explicit OpenTransaction(std::thread::id thread) : owner(thread) {}

        const std::thread::id owner;
        const uint64_t cuts = MappedFile::GetCutCount();
        unsigned depth = 1;
        bool failed = false;               // an inner level was rolled back
        std::shared_ptr<Catalog> working;  // null until the catalog is changed
        std::optional<usrprops> properties;
    };

    /// Where a table lies.
    struct Place {
        Area* area;
        std::wstring directory;                 // relative to the space
        uint64_t id = MetadataTable::noParent;  // in the catalog; none for a schema with a space of its own
    };

    Impl(RefCntPtr<TableSpace> rootSpace, bool durable);
    ~Impl();

    /// Throws when there is no database in the root.
    void RequireDatabase();
    /// The catalog as the calling thread sees it. Throws as ReadCatalog when it cannot be read.
    std::shared_ptr<const Catalog> View();
    /// The copy on which the transaction of the calling thread works.
    Catalog& Work();
    bool OwnsTransaction() const;
    bool HasOwnSpace(const std::wstring& schema) const { return areas.count(schema) != 0; }
    Area& GetArea(const std::wstring& schema);

    uint64_t FindSchema(const Catalog& catalog, const std::wstring& schema) const;
    Place FindTable(const Catalog* catalog, const std::wstring& table, const std::wstring& schema);
    /// The catalog to look `schema` up in; null for one that stands in none.
    std::shared_ptr<const Catalog> CatalogOf(const std::wstring& schema);

    /// The properties of a column. Throws 40459 for an unknown one.
    usrprops SelectColumnProperties(const Catalog* catalog, const Place& place, const std::wstring& column) const;
    void InsertColumn(const Place& place, const std::wstring& column, const usrprops& stored);
    void RefuseSystemSchema(const std::wstring& schema) const;

    /// The name of a file in a property set, and its path. Throws when it is not the name of a file.
    static std::wstring FileName(const usrprops& properties, usrpropkey key);
    static std::wstring ColumnFile(const Place& place, const usrprops& properties, usrpropkey key);
    /// Makes a directory of a free name like `name` in `base` and gives the name.
    std::wstring AllocateMetadataDir(Area& area, const std::wstring& name, const std::wstring& base);
    /// Makes a file of a free name like `name` in `directory` and gives the name.
    std::wstring AllocateColumnFile(Area& area, const std::wstring& extension, const std::wstring& name,
                                    const std::wstring& directory);
    /// Writes the property file of a column that exists so that it takes the old one's place with the transaction.
    void UpdateTypeFile(const Place& place, const usrprops& properties);

    void Begin();
    /// Whether files may lie about that no list names; asked at the begin of a transaction.
    bool MayHaveOrphans();
    void End();
    void Rollback();
    /// Reads the catalog if another writer has changed it.
    void Refresh();
    void Load();

    std::recursive_mutex mutex;
    std::condition_variable_any transactionEnded;
    Area root;
    const bool durable;
    std::map<std::wstring, std::unique_ptr<Area>> areas;  // by schema: spaces that stand in no catalog
    usrprops properties;
    std::map<std::pair<const TableSpace*, std::wstring>, DataStream::Guid> guids;
    std::shared_ptr<const Catalog> committed;
    uint64_t generation = 0;
    FileLock lock;
    std::shared_ptr<const DatabaseOwner> owner;  // from the first transaction on
    std::optional<OpenTransaction> transaction;

    void OpenLock(bool create);

    /// Finishes or takes back what a killed writer left. The writer's slot must be held.
    void Recover();

private:
    void Commit();
    void TakeBack();
    void Close(std::unique_lock<std::recursive_mutex>& guard);
    void CloseAllSpaces();
};

}  // namespace qve
