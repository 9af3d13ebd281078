#include "algebra/LookupExp.h"

#include <algorithm>
#include <cstring>

#include "algebra/ExpVisitor.h"
#include "algebra/Join.h"
#include "algebra/LeafTable.h"
#include "algebra/status.h"
#include "primitives/column_kernels.h"
#include "storage/Column.h"
#include "storage/stream/TempFileDataStream.h"
#include "system/QuillonException.h"
#include "types/usrtype.h"

namespace qve {
namespace {

const std::wstring valueName = L".VALUE";

std::wstring KeyName(size_t key) {
    return L".LOOKUP" + std::to_wstring(key);
}

ColumnNames KeyNames(size_t keys) {
    ColumnNames names;
    for (size_t key = 0; key < keys; ++key) names.insert(KeyName(key));
    return names;
}

}  // namespace

/// The keys of the page as a flow of that page.
class LookupExp::ExpFlow : public DataFlow {
public:
    explicit ExpFlow(const Arguments& keys) : DataFlow(nullptr, KeyNames(keys.size())), m_keys(keys) {}
    void Accept(OperatorVisitor&) override {}
    RefCntPtr<Column> LoadColumn(const std::wstring& name) const override { return LookupColumn(name); }
    RefCntPtr<Column> LookupColumn(const std::wstring& name) const override {
        size_t key = 0;
        while (KeyName(key) != name) ++key;
        return m_keys[key]->GetColumn();
    }
    void ShowPage(unsigned count, unsigned extent, const unsigned* sel) {
        m_extent = extent;
        m_selection = sel;
        m_selectionCount = count;
    }
    unsigned Next(unsigned) override { return m_extent; }

private:
    const Arguments m_keys;
};

/// The join that finds the rows.
class LookupExp::Probe : public Join {
public:
    Probe(const LookupExp& owner)
        : Join(owner.m_flow, owner.m_table, Pairs(owner), {{owner.m_tableColumns.back(), valueName}}, LeftJoin, true),
          m_otherwise(owner.m_otherwise) {}

protected:
    bool FollowsLinks() const override { return false; }

    void ImportInner(unsigned count, unsigned extent, const unsigned* rows, const unsigned* sel) override {
        Join::ImportInner(count, extent, rows, sel);
        if (m_otherwise.isnull()) return;
        m_missing.clear();
        for (unsigned k = 0; k < count; ++k) {
            const unsigned row = sel ? sel[k] : k;
            if (rows[row] == Grouping::noGroup) m_missing.push_back(row);
        }
        if (m_missing.empty()) return;
        Column& column = *GetColumn(valueName);
        output_column out = column.GetOutput(0);
        if (!m_hasCell) {
            const output_column cell{m_cell, out.heap, out.width, 1, nullptr};
            column.GetType()->put(cell, 0, m_otherwise);
            m_hasCell = true;
        }
        out.heap = nullptr;
        out.flags = nullptr;
        map_type_type_val(out.width)(static_cast<unsigned>(m_missing.size()), out,
                                     input_column{m_cell, nullptr, out.width, 1, 0}, m_missing.data());
    }

private:
    static NamePairs Pairs(const LookupExp& owner) {
        NamePairs pairs;
        for (size_t key = 0; key < owner.m_arguments.size(); ++key) {
            pairs.emplace_back(KeyName(key), owner.m_tableColumns[key]);
        }
        return pairs;
    }

    const usratom m_otherwise;
    char m_cell[sizeof(uint64_t)];  // m_otherwise as the column stores it
    bool m_hasCell = false;
    std::vector<unsigned> m_missing;
};

LookupExp::LookupExp(const std::wstring& name, Arguments keys, RefCntPtr<Table> table, usratom otherwise)
    : Exp(name, std::move(keys)), m_table(std::move(table)), m_otherwise(std::move(otherwise)) {
    m_tableColumns.resize(m_arguments.size() + 1);
    for (const std::wstring& column : m_table->GetColumnNames()) {
        const RefCntPtr<Column> description = m_table->DescribeColumn(column);
        const uint64_t ordinal = description->GetSizeProperty(usrpropkey::ordinal);
        if (!description->HasProperty(usrpropkey::ordinal) || ordinal >= m_tableColumns.size()) {
            throw QVE_OutOfRange(status::LookupExp_ordinal, "LookupExp::LookupExp: ordinal out of bounds");
        }
        if (!m_tableColumns[ordinal].empty()) {
            throw QVE_InvalidArgument(status::LookupExp_import,
                                      "LookupExp::LookupExp: missing or ambiguous import column");
        }
        m_tableColumns[ordinal] = column;
    }
    if (m_arguments.empty() || std::find(m_tableColumns.begin(), m_tableColumns.end(), L"") != m_tableColumns.end()) {
        throw QVE_InvalidArgument(status::LookupExp_import, "LookupExp::LookupExp: missing or ambiguous import column");
    }
}

LookupExp::~LookupExp() = default;

void LookupExp::Accept(ExpVisitor& visitor) {
    visitor.VisitLookupExp(*this);
}

RefCntPtr<Column> LookupExp::AllocateColumn(const Namespace* input) {
    if (m_probe) return m_column;
    Exp::AllocateColumn(input);
    m_table->Build(Namespace::s_blockLength);
    m_single = m_isConstant = true;
    for (size_t i = 0; i < m_arguments.size(); ++i) {
        const RefCntPtr<Exp>& key = m_arguments[i];
        key->SetName(KeyName(i));  // as the flow of the keys calls it
        m_single = m_single && key->GetPrimitiveStorage() == Column::storageVal;
        m_isConstant = m_isConstant && key->IsConstant();
    }
    m_flow = MakeRef<ExpFlow>(m_arguments);
    m_probe = MakeRef<Probe>(*this);
    m_value = m_probe->GetColumn(valueName);
    const Column& stored = *m_table->GetColumn(m_tableColumns.back());
    usrprops properties = m_value->GetProperties();
    properties.set(usrpropkey::name, GetName());
    properties.erase(usrpropkey::ordinal);
    if (m_single) properties.set(usrpropkey::storagetype, Column::storageVal);
    if (stored.IsCompressed()) properties.set(usrpropkey::storagewidth, std::to_wstring(stored.GetTokenSize()));
    // The other value may come to the end of the dictionary.
    if (!m_otherwise.isnull()) properties.erase(usrpropkey::comparable);
    m_column = MakeRef<Column>(std::move(properties), MakeRef<TempFileDataStream>(), stored.GetDict());
    const bool byToken = m_arguments.size() == 1 && !m_single && m_arguments[0]->GetColumn()->IsCompressed();
    if (byToken) m_memo = std::make_unique<TokenMemo>(m_column->GetTokenSize());
    return m_column;
}

void LookupExp::Evaluate(unsigned count, unsigned extent, const unsigned* sel, const Namespace* input) {
    EvaluateArguments(count, extent, sel, input);
    if (m_single) {
        count = extent = 1;
        sel = nullptr;
    }
    const output_column out = ReserveBuffer(extent);
    *out.flags &= static_cast<unsigned char>(~column_flags::not_null);
    if (!m_memo || !m_memo->Begin(*m_arguments[0]->GetColumn())) {
        Find(count, extent, sel, out);
        return;
    }
    const input_column tokens = m_arguments[0]->GetResult();
    const std::span<const unsigned> missing = m_memo->Recall(count, sel, tokens, out);
    if (missing.empty()) return;
    Find(static_cast<unsigned>(missing.size()), extent, missing.data(), out);
    m_memo->Remember(missing, tokens, out);
}

void LookupExp::Find(unsigned count, unsigned extent, const unsigned* sel, output_column out) {
    if (count == 0) return;
    m_flow->ShowPage(count, extent, sel);
    m_probe->Next(extent);
    input_column values = m_value->GetInput(0);
    values.heap = nullptr;
    out.heap = nullptr;
    out.flags = nullptr;
    map_type_type_col(out.width)(count, out, values, sel);
}

LookupTable::LookupTable(const std::vector<const usrtype*>& keys, const usrtype* value) {
    for (size_t i = 0; i <= keys.size(); ++i) {
        const usrtype& type = i < keys.size() ? *keys[i] : *value;
        usrprops properties = type.properties();
        properties.set(usrpropkey::name, i < keys.size() ? L"key" + std::to_wstring(i) : L"value");
        properties.set(usrpropkey::ordinal, std::to_wstring(i));
        RefCntPtr<DataStream> dictionary;
        if (!type.fixed()) {
            properties.set(usrpropkey::compression, L"heap");
            properties.set(usrpropkey::distinct, true);
            dictionary = MakeRef<TempFileDataStream>();
        }
        m_columns.push_back(MakeRef<Column>(std::move(properties), MakeRef<TempFileDataStream>(), dictionary));
    }
}

LookupTable::~LookupTable() = default;

void LookupTable::Add(const std::vector<usratom>& cells) {
    for (size_t i = 0; i < m_columns.size(); ++i) {
        m_columns[i]->Append(1, cells[i].type() ? cells[i] : usratom(m_columns[i]->GetType()), false);
    }
}

RefCntPtr<Table> LookupTable::Finish() {
    ColumnMap columns;
    for (const RefCntPtr<Column>& column : m_columns) {
        column->Seek(0, 0);
        columns.emplace(column->GetName(), column);
    }
    return MakeRef<LeafTable>(L".LOOKUP", std::move(columns));
}

}  // namespace qve
