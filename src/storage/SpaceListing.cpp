#include "storage/SpaceListing.h"

#include <algorithm>

#include "os/Path.h"
#include "storage/PropertyFile.h"
#include "storage/SimpleDatabase.h"

namespace qve {

const std::wstring SpaceListing::tableFile = L".table";

std::vector<SpaceListing::Table> SpaceListing::Tables(TableSpace& space) {
    std::vector<Table> tables;
    for (const std::wstring& directory : space.listdir(L"")) {
        if (!space.isdir(directory)) continue;
        std::wstring name = directory;
        const std::wstring file = Path::join(directory, tableFile);
        if (space.isfile(file)) name = ReadPropertyFile(space, file).text(usrpropkey::name, directory);
        tables.push_back({std::move(name), directory});
    }
    std::sort(tables.begin(), tables.end(), [](const Table& a, const Table& b) { return a.name < b.name; });
    return tables;
}

std::vector<SpaceListing::Column> SpaceListing::Columns(TableSpace& space, const std::wstring& directory) {
    std::vector<Column> columns;
    for (const std::wstring& file : space.listdir(directory)) {
        const auto [stem, extension] = Path::splitext(file);
        if (extension != SimpleDatabase::extTypeFile) continue;
        usrprops properties = ReadPropertyFile(space, Path::join(directory, file));
        const auto complete = [&properties](usrpropkey key, const std::wstring& name) {
            if (!properties.has(key)) properties.set(key, name);
        };
        complete(usrpropkey::name, stem);
        complete(usrpropkey::type_file, file);
        complete(usrpropkey::data_file, stem + SimpleDatabase::extDataFile);
        if (properties.has(usrpropkey::compression)) {
            complete(usrpropkey::dict_file, stem + SimpleDatabase::extDictFile);
        }
        columns.push_back({std::wstring(properties.text(usrpropkey::name)), std::move(properties)});
    }
    std::sort(columns.begin(), columns.end(), [](const Column& a, const Column& b) {
        const auto order = [](const Column& column) {
            return std::make_pair(column.properties.number(usrpropkey::ordinal, ~0ULL), column.name);
        };
        return order(a) < order(b);
    });
    return columns;
}

}  // namespace qve
