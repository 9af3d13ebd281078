#pragma once

#include <cstdint>

#include "algebra/ConstantExp.h"
#include "storage/stream/DataStream.h"

namespace qve {

class Column;

/// A constant as a token of the dictionary of a column, to be compared for equality with that column by token. A value
/// that the dictionary does not hold becomes a token that no row has.
class DictionaryConstantExp : public ConstantExp {
public:
    /// Null when `value` is null, or looking it up in the dictionary would cost more than it saves.
    static RefCntPtr<DictionaryConstantExp> Make(const usratom& value, RefCntPtr<Column> column);

    /// Looks the value up again if the column has come to another dictionary, or to more entries.
    void Refresh();

    /// `token` has one row, of the dictionary of `column`; `value` is of the column's type, or of none when the column
    /// cannot hold it. Make is the way to come by one.
    DictionaryConstantExp(RefCntPtr<Column> token, RefCntPtr<Column> column, usratom value);

private:
    void Lookup();

    const RefCntPtr<Column> m_source;
    const usratom m_value;
    RefCntPtr<DataStream> m_dictionary;
    uint64_t m_entries = 0;  // the first free token at the last lookup
};

}  // namespace qve
