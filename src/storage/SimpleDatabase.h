#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "storage/Database.h"

namespace qve {

/// The one concrete Database. It turns the names of schemas, tables and columns into directories, files and columns
/// over a TableSpace, and keeps its catalog as ordinary tables of the schema "SYS" in the same space.
class SimpleDatabase : public Database {
public:
    static const std::wstring extDataFile;       ///< ".data", cells
    static const std::wstring extDictFile;       ///< ".dict", dictionary of a compressed column
    static const std::wstring extTypeFile;       ///< ".type", properties of a column
    static const std::wstring extTempFile;       ///< ".temp", a file that will take the place of another
    static const std::wstring databaseTypeFile;  ///< ".database.type", properties of the database
    static constexpr unsigned versionMajor = 1;
    static constexpr unsigned versionMinor = 0;
    static constexpr unsigned versionFix = 0;
    /// The highest major version that can be read; a database with a spatial column has it.
    static constexpr unsigned versionMajorSpatial = 2;
    static constexpr unsigned maxFileName = 127;

    /// Opens the database at `path`, or prepares one; creates nothing. A file is a package, whose changes are lost with
    /// the object. Finishes or takes back what a killed process left unfinished. Throws QVE_RangeError 201 when the
    /// database is too new.
    explicit SimpleDatabase(const std::wstring& path);
    /// A database over a space: what lies there, or one to be made.
    explicit SimpleDatabase(RefCntPtr<TableSpace> root);
    ~SimpleDatabase() override;

    /// The text of `version-major`, empty when absent.
    std::wstring GetMajorVersion() const;
    const std::wstring& GetRoot() const override;
    /// The path that was opened, also when what was written since lies elsewhere; empty for a space.
    const std::wstring& GetPath() const { return m_path; }
    const std::wstring& GetTempRoot() const;

    void CreateDatabase() override;
    void DropDatabase(bool cascade) override;
    usrprops GetProperties() const override;
    bool IsPackaged() const override;
    void PackageDatabase(const std::wstring& path, const RefCntPtr<ProgressCallback>& progress = nullptr) override;
    void UnpackageDatabase(const std::wstring& path, const RefCntPtr<ProgressCallback>& progress = nullptr) override;

    RefCntPtr<TableSpace> GetTableSpace(const std::wstring& schema) override;
    bool HasTableSpace(const std::wstring& schema) const override;
    void AddTableSpace(const std::wstring& schema, RefCntPtr<TableSpace> space) override;
    void RemoveTableSpace(const std::wstring& schema) override;

    std::vector<std::wstring> GetSchemaNames() const override;
    bool HasSchema(const std::wstring& schema) const override;
    std::unique_ptr<DatabaseSchema> LoadSchema(const std::wstring& schema) override;
    void CreateSchema(const std::wstring& schema) override;
    void DropSchema(const std::wstring& schema, bool cascade, bool ifexists) override;

    std::vector<std::wstring> GetTableNames(const std::wstring& schema) const override;
    void CreateTable(const std::wstring& table, const std::wstring& schema, const usrprops& properties = {}) override;
    usrprops DescribeTable(const std::wstring& table, const std::wstring& schema) const override;
    void DropTable(const std::wstring& table, const std::wstring& schema, bool cascade, bool ifexists) override;

    std::vector<std::wstring> GetColumnNames(const std::wstring& table, const std::wstring& schema) const override;
    usrprops DescribeColumn(const std::wstring& column, const std::wstring& table,
                            const std::wstring& schema) const override;
    RefCntPtr<Column> LoadColumn(const std::wstring& column, const std::wstring& table,
                                 const std::wstring& schema) override;
    void CreateColumn(const std::wstring& column, const std::wstring& table, const std::wstring& schema,
                      const usrprops& properties) override;
    void ReplaceColumn(const std::wstring& column, const std::wstring& table, const std::wstring& schema,
                       Column& source) override;
    void DropColumn(const std::wstring& column, const std::wstring& table, const std::wstring& schema, bool cascade,
                    bool ifexists) override;

    void BeginTransaction() override;
    void EndTransaction() override;
    void RollbackTransaction() override;

    /// A stream over a file of a space; a path keeps the guid of its stream.
    virtual RefCntPtr<DataStream> OpenStream(TableSpace& space, const std::wstring& path, bool writable);
    /// A column over its files. Writable ones are for a column that the transaction of the calling thread made.
    virtual RefCntPtr<Column> OpenColumn(const std::wstring& column, const std::wstring& table,
                                         const std::wstring& schema, bool writable = false);
    /// False for schemas that are listed from their space, as "SYS" and "TEMP".
    virtual bool SchemaUsesSystemTables(const std::wstring& schema) const;
    /// A column of the catalog, such as "NAME" of "SCHEMAS".
    virtual RefCntPtr<Column> OpenSystemColumn(const std::wstring& table, const std::wstring& column);

    /// Paths, relative to the root, of all files of a table's columns. Throws 40456 for an unknown table.
    std::vector<std::wstring> GetColumnFiles(const std::wstring& table, const std::wstring& schema) const;
    /// Directories of a schema and of a table of the catalog, relative to the root. Throw for unknown ones.
    std::wstring GetSchemaDirectory(const std::wstring& schema) const;
    std::wstring GetTableDirectory(const std::wstring& table, const std::wstring& schema) const;
    /// "SYS/SCHEMAS_NAME.data" for "SCHEMAS", "NAME" and ".data".
    static std::wstring SystemColumnPath(const std::wstring& table, const std::wstring& column,
                                         const std::wstring& extension);
    /// Drops all that is cached of the catalog.
    void InvalidateCache();

private:
    void SweepOrphans();
    /// Gives `copy` the files of the database, which nobody changes meanwhile.
    void WithSnapshot(const std::function<void(const RefCntPtr<TableSpace>&)>& copy);
    /// Makes a stream the data or dictionary file of a column. The name of the new file; none when it is the present
    /// one's.
    std::optional<std::wstring> ReplaceFile(const std::wstring& column, const std::wstring& table,
                                            const std::wstring& schema, usrpropkey key,
                                            const RefCntPtr<DataStream>& source);

    class Impl;
    std::unique_ptr<Impl> m_impl;
    std::wstring m_path;
};

}  // namespace qve
