#include "algebra/HashContext.h"

#include "algebra/status.h"
#include "storage/Column.h"
#include "system/QuillonException.h"

namespace qve {

namespace {

// The type by which the cells of `column` compare with those of `other`: as numbers, where they are the values or
// unique tokens of one dictionary, else as values of their heaps.
std::wstring CheckType(const Column& column, const Column& other) {
    if (!column.IsCompressed()) return column.GetPrimitiveType(usrpropkey::compression);
    const bool byToken = column.HasProperty(usrpropkey::distinct) && column.GetDict() == other.GetDict();
    return byToken ? column.GetPrimitiveType(usrpropkey::compression) : L"usr" + std::to_wstring(column.GetTokenSize());
}

}  // namespace

ternary_func ResolveUserCheck(const wchar_t* name, const Column& rows, const Column& groups) {
    const primitive::argument_list arguments = {{CheckType(rows, groups), primitive::storageCol},
                                                {CheckType(groups, rows), primitive::storageCol},
                                                {L"ulng", primitive::storageCol}};
    for (primitive* candidate : primitive::resolve(name, arguments)) {
        if (candidate->klass() == primitive::klassAggregate) return ResolvePrimitive<ternary_func>(candidate);
    }
    throw QVE_InvalidArgument(status::HashGrouping_ResolveUserCheck, "HashGrouping::ResolveUserCheck");
}

struct HashContext::KeyCheck {
    RefCntPtr<Column> rows;
    RefCntPtr<Column> groups;
    ternary_func function;
    const DataStream* dictionary;  // of the rows, when the function was chosen
};

HashContext::HashContext(const Namespace* rows, const Namespace* groups, const std::vector<std::wstring>& rowKeys,
                         const std::vector<std::wstring>& groupKeys, unsigned size)
    : ExpContext(rows, groups) {
    for (size_t i = 0; i < rowKeys.size(); ++i) {
        m_checks.push_back({rows->GetColumn(rowKeys[i]), groups->GetColumn(groupKeys[i]), nullptr, nullptr});
    }
    if (size > 0) {
        for (const KeyCheck& check : m_checks) check.groups->Seek(0, size);
    }
}
HashContext::~HashContext() = default;

const unsigned* HashContext::SelectHits(unsigned count, const unsigned* groups, const unsigned* sel) {
    unsigned hits = 0;
    for (unsigned i = 0; i < count; ++i) {
        const unsigned row = sel ? sel[i] : i;
        m_candidates[hits] = row;
        hits += groups[row] != Grouping::noGroup;
    }
    return m_candidates.data();
}

// Lists the rows without a group again, in order.
void HashContext::ListMisses(unsigned count, const unsigned* groups, const unsigned* sel) {
    unsigned misses = 0;
    for (unsigned i = 0; i < count; ++i) {
        const unsigned row = sel ? sel[i] : i;
        m_missing[misses] = row;
        misses += groups[row] == Grouping::noGroup;
    }
}

// Compares the keys of rows with those of the groups they are thought to be of, and lists the rows that differ.
unsigned HashContext::Check(unsigned size, unsigned extent, unsigned count, const unsigned* rows, unsigned* groups,
                            unsigned available) {
    if (m_differs.size() < extent) m_differs.resize(extent);
    unsigned char flags = 0;
    const output_column differs{m_differs.data(), nullptr, 1, static_cast<unsigned>(m_differs.size()), &flags};
    const input_column numbers{groups, nullptr, sizeof(unsigned), available, column_flags::not_null};
    const wchar_t* operation = L"check";
    for (KeyCheck& check : m_checks) {
        const DataStream* dictionary = check.rows->GetDict().get();
        if (!check.function || dictionary != check.dictionary) {
            check.function = ResolveUserCheck(operation, *check.rows, *check.groups);
            check.dictionary = dictionary;
        }
        operation = L"recheck";
        check.groups->Seek(0, size);
        check.function(count, differs, check.rows->GetInput(0), check.groups->GetInput(0), numbers, rows);
    }
    unsigned different = 0;
    for (unsigned i = 0; i < count; ++i) {
        const unsigned row = rows ? rows[i] : i;
        m_candidates[different] = row;
        different += m_differs[row] & 1;
    }
    return different;
}

}  // namespace qve
