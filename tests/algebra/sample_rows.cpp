#include "tests/algebra/sample_rows.h"

#include <limits>
#include <sstream>

#include "primitives/define_primitives.h"
#include "primitives/primitive.h"
#include "storage/stream/TempFileDataStream.h"
#include "types/types_initialization.h"
#include "types/usrtype.h"
#include "types/varchar.h"

namespace qve {

namespace {

class SampleEnvironment : public testing::Environment {
    void SetUp() override {
        types_initialization();
        define_primitives();
    }
};

const auto* const environment = testing::AddGlobalTestEnvironment(new SampleEnvironment);

RefCntPtr<Column> EmptyColumn(const std::wstring& type, const std::wstring& name) {
    if (type != L"text") {
        usrprops properties = primitive::primitive_props(type);
        properties.set(usrpropkey::name, name);
        return MakeRef<Column>(std::move(properties), MakeRef<TempFileDataStream>());
    }
    usrprops properties = varchar::propsof(50, 1);
    properties.set(usrpropkey::name, name);
    properties.set(usrpropkey::compression, L"heap");
    properties.set(usrpropkey::storagewidth, L"4");
    return MakeRef<Column>(std::move(properties), MakeRef<TempFileDataStream>(), MakeRef<TempFileDataStream>());
}

std::string Value(const std::wstring& type, unsigned number, const SampleOptions& options) {
    if (options.nan && (type == L"float" || type == L"double") && number < 5) {
        const char* const odd[] = {"nan", "inf", "-inf", "0", "-0"};
        return odd[number];
    }
    if (type == L"bit") return number % 2 ? "t" : "f";
    if (type == L"text") return number == 0 ? "" : "value " + std::to_string(number * 7919 % 10007);
    const long long value = static_cast<long long>(number) * options.spread;
    if (type == L"tiny") return std::to_string(value % 127 - 63);
    if (type == L"uchr") return std::to_string(value % 255);
    if (type == L"short") return std::to_string(value % 65535 - 32767);
    if (type == L"usht") return std::to_string(value % 65535);
    if (type == L"long") return std::to_string(value % 2000000000 - 5LL * options.spread % 1000000);
    if (type == L"ulng") return std::to_string(value % 4000000000);
    // Days of years with four digits, and times of a day.
    if (type == L"date") return std::to_string(2400000 + value % 200000);
    if (type == L"datetime") return std::to_string((2400000 + value % 200000) * 864000000LL);
    if (type == L"duration") return std::to_string(value % 86400 * 10000);
    if (type == L"bigint") return std::to_string(value - 5LL * options.spread);
    if (type == L"float" || type == L"double") return std::to_string(value - 5) + ".25";
    return std::to_string(value);
}

void AppendValue(Column& column, const std::wstring& type, const std::string& value) {
    usratom atom(column.GetType());
    if (value == "NULL") {
    } else if (type == L"text") {
        atom.assign(column.GetType(), value.data(), value.size());
    } else if (type == L"float" || type == L"double") {
        const double number = value == "nan" ? std::numeric_limits<double>::quiet_NaN() : std::stod(value);
        const auto narrow = static_cast<float>(number);
        type == L"float" ? atom.assign(column.GetType(), reinterpret_cast<const char*>(&narrow), sizeof(narrow))
                         : atom.assign(column.GetType(), reinterpret_cast<const char*>(&number), sizeof(number));
    } else if (type == L"date" || type == L"datetime" || type == L"duration") {
        const unsigned long long number = std::stoull(value);
        atom.assign(column.GetType(), reinterpret_cast<const char*>(&number), type == L"date" ? 4 : 8);
    } else {
        ASSERT_FALSE(column.GetType()->frombuffer(atom, 0, static_cast<unsigned>(value.size()), value.data()));
    }
    column.Append(1, atom, false);
}

}  // namespace

const std::vector<std::wstring>& SampleTypes() {
    static const std::vector<std::wstring> types = {L"bit",    L"tiny", L"short",    L"long",     L"bigint",
                                                    L"uchr",   L"usht", L"ulng",     L"oid",      L"float",
                                                    L"double", L"date", L"datetime", L"duration", L"text"};
    return types;
}

RefCntPtr<Column> SampleColumn(const std::wstring& type, const std::wstring& name, unsigned rows,
                               const SampleOptions& options, std::mt19937& random) {
    const RefCntPtr<Column> column = EmptyColumn(type, name);
    std::uniform_real_distribution<> share;
    std::uniform_int_distribution<unsigned> number(0, options.distinct - 1);
    for (unsigned row = 0; row < rows; ++row) {
        AppendValue(*column, type, share(random) < options.nulls ? "NULL" : Value(type, number(random), options));
    }
    if (column->GetDict()) column->UpdateAcceleratorProperties();
    column->Seek(0, 0);
    return column;
}

RefCntPtr<Column> ColumnOf(const std::wstring& type, const std::wstring& name, const std::vector<std::string>& values) {
    const RefCntPtr<Column> column = EmptyColumn(type, name);
    for (const std::string& value : values) AppendValue(*column, type, value);
    if (column->GetDict()) column->UpdateAcceleratorProperties();
    column->Seek(0, 0);
    return column;
}

RefCntPtr<LeafTable> TableOf(const std::vector<RefCntPtr<Column>>& columns) {
    ColumnMap map;
    for (const RefCntPtr<Column>& column : columns) map.emplace(column->GetName(), column);
    return MakeRef<LeafTable>(L"sample", std::move(map));
}

std::vector<std::string> Cells(Column& column) {
    std::vector<std::string> cells;
    for (uint64_t row = 0; row < column.GetCount(); ++row) {
        column.Seek(row, 1);
        usratom atom(column.GetType());
        column.GetType()->get(column.GetInput(), 0, atom);
        std::ostringstream text;
        column.GetType()->tostream(text, atom);
        cells.push_back(text.str());
    }
    return cells;
}

std::vector<std::vector<std::string>> Rows(const Table& table, const std::vector<std::wstring>& names) {
    std::vector<std::vector<std::string>> rows(table.GetCount());
    for (const std::wstring& name : names) {
        const std::vector<std::string> cells = Cells(*table.GetColumn(name));
        EXPECT_EQ(cells.size(), rows.size());
        for (size_t row = 0; row < std::min(rows.size(), cells.size()); ++row) rows[row].push_back(cells[row]);
    }
    return rows;
}

SampleSelect::SampleSelect(RefCntPtr<Table> table, double share, unsigned seed)
    : DataFlow(MakeRef<Scan>(table), table->GetColumnNames()), m_share(share), m_seed(seed) {}

unsigned SampleSelect::Next(unsigned pageSize) {
    const uint64_t first = m_source->GetCursor();
    DataFlow::Next(pageSize);
    // Whether a row passes does not depend on the pages. Some stretches of rows are left out whole.
    constexpr uint64_t stretch = 120;
    const auto draw = [this](uint64_t number) {
        std::minstd_rand random(static_cast<unsigned>(m_seed + 7919 * number + 1));
        random.discard(3);
        return std::uniform_real_distribution<>()(random);
    };
    m_rows.clear();
    for (unsigned row = 0; row < m_extent; ++row) {
        const uint64_t number = first + row;
        const bool passes = draw(~(number / stretch)) >= 0.1 && draw(number) < m_share;
        if (m_share >= 1 || passes) m_rows.push_back(row);
    }
    for (const unsigned row : m_rows) m_selected.push_back(first + row);
    if (m_share < 1) m_selection = m_rows.data();
    m_selectionCount = static_cast<unsigned>(m_rows.size());
    return m_extent;
}

void SampleSelect::ResetCursor() {
    DataFlow::ResetCursor();
    m_selected.clear();
}

}  // namespace qve
