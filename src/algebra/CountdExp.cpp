#include "algebra/CountdExp.h"

#include <algorithm>
#include <cstring>
#include <optional>

#include "algebra/DistinctCells.h"
#include "algebra/status.h"
#include "primitives/primitive.h"
#include "storage/Column.h"
#include "system/QuillonException.h"
#include "telemetry/LogEntry.h"
#include "types/usratom.h"
#include "vql/syntax/VQLEvaluatorSettings.h"
#include "vql/syntax/number_text.h"

namespace qve {
namespace {

// What bounds the values: the statistics of integers, the width of narrow tokens.
std::pair<uint64_t, uint64_t> RangeOf(const Column& column) {
    if (column.IsCompressed()) return {0, column.GetTokenSize() <= 2 ? uint64_t{1} << 8 * column.GetTokenSize() : 0};
    const std::wstring* low = column.GetProperties().get(usrpropkey::min_value);
    const std::wstring* high = column.GetProperties().get(usrpropkey::max_value);
    if (!low || !high || column.GetDataType() != DataType::integer) return {0, 0};
    const std::optional<long long> first = ParseInteger(*low);
    const std::optional<long long> last = ParseInteger(*high);
    if (!first || !last || *first > *last) return {0, 0};
    // All of 64 bits wraps to 0, which says as much.
    return {static_cast<uint64_t>(*first), static_cast<uint64_t>(*last) - static_cast<uint64_t>(*first) + 1};
}

// One value of `width` bytes as 64 bits.
template <class T>
uint64_t Widened(T cell) {
    return static_cast<uint64_t>(static_cast<long long>(cell));
}

uint64_t NullOf(const Column& column) {
    const unsigned width = column.GetTokenSize();
    if (column.IsCompressed()) return ~uint64_t{0} >> (64 - 8 * width);
    uint64_t bits = 0;
    std::memcpy(&bits, column.GetType()->null().data(), width);
    if (column.GetDataType() != DataType::integer) return bits;
    const unsigned shift = 64 - 8 * width;
    return static_cast<uint64_t>(static_cast<long long>(bits << shift) >> shift);
}

// Calls `visit(cells)` with the cells as integers of their width; signed for integers, whose order their range follows.
template <class Visit>
void WithCells(const Column& column, const void* data, Visit visit) {
    const bool isSigned = !column.IsCompressed() && column.GetDataType() == DataType::integer;
    switch (column.GetTokenSize()) {
        case 1:
            return isSigned ? visit(static_cast<const int8_t*>(data)) : visit(static_cast<const uint8_t*>(data));
        case 2:
            return isSigned ? visit(static_cast<const int16_t*>(data)) : visit(static_cast<const uint16_t*>(data));
        case 4:
            return isSigned ? visit(static_cast<const int32_t*>(data)) : visit(static_cast<const uint32_t*>(data));
        default:
            return visit(static_cast<const uint64_t*>(data));
    }
}

// The two zeros of a real number are one value.
uint64_t NegativeZeroOf(const Column& column) {
    if (column.IsCompressed() || column.GetDataType() != DataType::real) return 0;
    return uint64_t{1} << (8 * column.GetTokenSize() - 1);
}

}  // namespace

CountdExp::CountdExp(const std::wstring& name, RefCntPtr<Exp> value)
    : CollectingExp(name, opCountd, {std::move(value)}) {}
CountdExp::~CountdExp() = default;

bool CountdExp::CanCount(const Column& column) {
    if (column.IsCompressed()) return column.HasProperty(usrpropkey::distinct);
    const unsigned width = column.GetTokenSize();
    const DataType type = column.GetDataType();
    return (width == 1 || width == 2 || width == 4 || width == 8) && type != DataType::usr && type != DataType::spatial;
}

void CountdExp::MakePrimitiveColumn() {
    const Column& value = *m_arguments[0]->GetColumn();
    if (!CanCount(value)) {
        throw QVE_InvalidArgument(status::CountdExp_MakePrimitiveColumn, "CountdExp::MakePrimitiveColumn");
    }
    const auto [least, range] = RangeOf(value);
    m_cells = std::make_unique<DistinctCells>(least, range);
    usrprops properties = primitive::primitive_props(L"bigint");
    properties.set(usrpropkey::default_value, L"0");
    MakeResultColumn(std::move(properties));
}

// The values that are no nulls to m_values, and their groups, unless there is one for all, to m_numbers.
unsigned CountdExp::Gather(unsigned count, input_column groups, const unsigned* sel, unsigned firstGroup) {
    const Column& column = *m_arguments[0]->GetColumn();
    const uint64_t null = NullOf(column);
    const uint64_t negativeZero = NegativeZeroOf(column);
    const bool single = m_arguments[0]->GetPrimitiveStorage() == Column::storageVal;
    const bool oneGroup = groups.flags & column_flags::constant;
    m_values.resize(std::max<size_t>(m_values.size(), count));
    m_numbers.resize(m_values.size());
    unsigned kept = 0;
    WithCells(column, m_arguments[0]->GetResult().data, [&](const auto* cells) {
        for (unsigned k = 0; k < count; ++k) {
            const unsigned row = sel ? sel[k] : k;
            uint64_t value = Widened(cells[single ? 0 : row]);
            if (negativeZero != 0 && value == negativeZero) value = 0;
            m_values[kept] = value;
            if (!oneGroup) m_numbers[kept] = firstGroup + groups.values<unsigned>()[row];
            kept += value != null;
        }
    });
    return kept;
}

void CountdExp::Aggregate(unsigned count, input_column groups, const unsigned* sel) {
    const auto firstGroup = static_cast<unsigned>(m_column->GetCursor());
    m_counts.resize(m_column->GetCount());
    const bool oneGroup = groups.flags & column_flags::constant;
    const unsigned kept = Gather(count, groups, sel, firstGroup);
    if (kept == 0) return;
    m_cells->Add(kept, m_values.data(), oneGroup ? nullptr : m_numbers.data(),
                 firstGroup + (oneGroup ? groups.values<unsigned>()[0] : 0), m_counts);
}

void CountdExp::FinishAggregate(uint64_t groups, const ProgressCallback*) {
    if (VQLEvaluatorSettings::GetDefaultDescribeExecution()) {
        LogEntry() << "AGGR " << GetName() << ": distinct values in "
                   << (m_cells->IsHashed() ? "a hash table" : "bit maps");
    }
    m_cells.reset();
    m_counts.resize(groups);
    StoreResults<uint64_t>(groups, [this](uint64_t group) { return m_counts[group]; });
}

}  // namespace qve
