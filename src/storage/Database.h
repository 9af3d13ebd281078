#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "storage/Column.h"
#include "storage/TableSpace.h"
#include "system/ProgressCallback.h"
#include "system/RefCntObject.h"
#include "types/usrprops.h"

namespace qve {

class DatabaseSchema;

/// Schemas, their tables and the tables' columns. Shared by reference; every operation may be called from any thread.
///
/// Changes of the catalog are transactions: between BeginTransaction and EndTransaction, or by themselves when no
/// transaction is open on the calling thread. Other threads, other Database objects on the same directory and other
/// processes see all of a transaction or nothing, also after the process was killed in the middle.
class Database : public RefCntObject {
public:
    // The tables and columns of the catalog.
    static const std::wstring systemSchema;  ///< "SYS"
    static const std::wstring tempSchema;    ///< "TEMP"
    static const std::wstring tableSchemas, tableSchemaProps;
    static const std::wstring tableTables, tableTableProps;
    static const std::wstring tableColumns, tableColumnProps;
    static const std::wstring tableDual;
    static const std::wstring columnID, columnParent, columnName, columnKey, columnValue, columnActive;
    static const std::wstring columnSep;  ///< "_"
    /// Shape of the texts of the catalog: length, bytes per code unit, collation.
    static constexpr unsigned metadataPrecision = 127;
    static constexpr unsigned metadataScale = 2;
    static std::wstring metadataCollate;
    /// "SCHEMAS_NAME" for "SCHEMAS" and "NAME".
    static std::wstring NameSystemColumn(const std::wstring& table, const std::wstring& column);

    /// Where a database lies on disk; empty when it lies nowhere.
    virtual const std::wstring& GetRoot() const = 0;

    virtual void CreateDatabase() = 0;
    /// Removes everything and the root. Without `cascade` a database that holds a schema is refused.
    virtual void DropDatabase(bool cascade) = 0;
    virtual usrprops GetProperties() const = 0;
    /// Whether the database is one package file.
    virtual bool IsPackaged() const = 0;
    /// Writes all that is committed to a new package file, or to a new directory; other transactions wait meanwhile.
    /// Progress counts files. Throws Operator::CancelledException.
    virtual void PackageDatabase(const std::wstring& path, const RefCntPtr<ProgressCallback>& progress = nullptr) = 0;
    virtual void UnpackageDatabase(const std::wstring& path, const RefCntPtr<ProgressCallback>& progress = nullptr) = 0;

    /// The space of a schema: its own, or the database's.
    virtual RefCntPtr<TableSpace> GetTableSpace(const std::wstring& schema) = 0;
    /// Whether the schema has a space of its own.
    virtual bool HasTableSpace(const std::wstring& schema) const = 0;
    /// Makes a schema of what the space holds; it stands in no catalog. Throws 40445 when the schema has a space.
    virtual void AddTableSpace(const std::wstring& schema, RefCntPtr<TableSpace> space) = 0;
    /// Throws 40458 when the schema has no space.
    virtual void RemoveTableSpace(const std::wstring& schema) = 0;

    /// Lists are in the order of creation.
    virtual std::vector<std::wstring> GetSchemaNames() const = 0;
    virtual bool HasSchema(const std::wstring& schema) const = 0;
    /// A new handle on a schema; throws QVE_RangeError when there is no such schema.
    virtual std::unique_ptr<DatabaseSchema> LoadSchema(const std::wstring& schema) = 0;
    /// The database's own handle on a schema, which lives as long as the database. Throws as LoadSchema.
    virtual DatabaseSchema* GetSchema(const std::wstring& schema);
    virtual void CreateSchema(const std::wstring& schema) = 0;
    /// Without `cascade` a schema with tables is refused; with `ifexists` a missing one is no failure.
    virtual void DropSchema(const std::wstring& schema, bool cascade, bool ifexists) = 0;

    virtual std::vector<std::wstring> GetTableNames(const std::wstring& schema) const = 0;
    virtual void CreateTable(const std::wstring& table, const std::wstring& schema,
                             const usrprops& properties = {}) = 0;
    virtual usrprops DescribeTable(const std::wstring& table, const std::wstring& schema) const = 0;
    virtual void DropTable(const std::wstring& table, const std::wstring& schema, bool cascade, bool ifexists) = 0;

    virtual std::vector<std::wstring> GetColumnNames(const std::wstring& table, const std::wstring& schema) const = 0;
    /// The properties of a column, file names included. Throws 40459 for an unknown column.
    virtual usrprops DescribeColumn(const std::wstring& column, const std::wstring& table,
                                    const std::wstring& schema) const = 0;
    /// A column to read, with streams of its own.
    virtual RefCntPtr<Column> LoadColumn(const std::wstring& column, const std::wstring& table,
                                         const std::wstring& schema) = 0;
    /// An empty column with the properties given: type, compression, default and the like.
    virtual void CreateColumn(const std::wstring& column, const std::wstring& table, const std::wstring& schema,
                              const usrprops& properties) = 0;
    /// Makes `source` the content of a column that exists: its properties and its data. A stream over a temporary file
    /// is moved, not copied; the source may be read further on, but not written.
    virtual void ReplaceColumn(const std::wstring& column, const std::wstring& table, const std::wstring& schema,
                               Column& source) = 0;
    virtual void DropColumn(const std::wstring& column, const std::wstring& table, const std::wstring& schema,
                            bool cascade, bool ifexists) = 0;

    /// Opens a transaction on the calling thread, or a nested one, which ends with the outermost. Waits for a
    /// transaction of another thread or process to end.
    virtual void BeginTransaction() = 0;
    /// Makes everything since BeginTransaction durable and visible.
    virtual void EndTransaction() = 0;
    /// Takes everything since the outermost BeginTransaction back. Ends one level; the enclosing ones can only be
    /// rolled back too.
    virtual void RollbackTransaction() = 0;

    /// A transaction that is rolled back unless it is committed.
    class Transaction {
    public:
        explicit Transaction(Database& database) : m_database(&database) { database.BeginTransaction(); }
        ~Transaction() {
            if (m_database) m_database->RollbackTransaction();
        }
        Transaction(const Transaction&) = delete;
        Transaction& operator=(const Transaction&) = delete;
        void Commit() {
            Database* database = m_database;
            m_database = nullptr;
            database->EndTransaction();
        }

    private:
        Database* m_database;
    };

protected:
    Database();
    ~Database() override;

private:
    std::mutex m_schemasMutex;
    std::map<std::wstring, std::unique_ptr<DatabaseSchema>> m_schemas;
};

}  // namespace qve
