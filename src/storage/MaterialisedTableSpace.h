#pragma once

#include <boost/container/flat_set.hpp>

#include "storage/Column.h"
#include "storage/TableSpace.h"

namespace qve {

/// A read-only view of computed tables as if they were the directory of a schema: `<table>/<column><extension>`. Every
/// change is refused (40245 to 40255).
class MaterialisedTableSpace : public TableSpace {
public:
    /// One computed table.
    class Source : public RefCntObject {
    public:
        virtual std::vector<std::wstring> GetColumnNames() const = 0;
        /// A column with its data. Throws for an unknown name.
        virtual RefCntPtr<Column> LoadColumn(const std::wstring& name) const = 0;
    };
    /// Where the tables come from. Outlives the space.
    class TableFactory {
    public:
        virtual ~TableFactory() = default;
        virtual std::vector<std::wstring> GetTableNames() const = 0;
        /// Null when there is no such table.
        virtual RefCntPtr<Source> GetTable(const std::wstring& name) = 0;
    };

    /// The set of names is what the factory lists now.
    explicit MaterialisedTableSpace(TableFactory& factory);

    const std::wstring& root() const override;
    void mkdir(const std::wstring& path) override;
    std::vector<std::wstring> listdir(const std::wstring& path) const override;
    void rmdir(const std::wstring& path) override;
    void create(const std::wstring& path) override;
    void rename(const std::wstring& from, const std::wstring& to) override;
    void unlink(const std::wstring& path) override;
    bool exists(const std::wstring& path) const override;
    bool isfile(const std::wstring& path) const override;
    bool isdir(const std::wstring& path) const override;
    RefCntPtr<DataStream> open(const std::wstring& path, bool writable) override;
    void close(const std::wstring&) override {}
    void closeall() override {}
    /// The table of the factory; throws 40245 when it is unknown.
    virtual RefCntPtr<Source> GetTable(const std::wstring& name) const;

private:
    TableFactory& m_factory;
    boost::container::flat_set<std::wstring> m_tables;
};

}  // namespace qve
