// How a column grows and is overwritten.

#include <algorithm>
#include <cstring>

#include "primitives/column_kernels.h"
#include "storage/Column.h"
#include "storage/status.h"
#include "system/QuillonException.h"

namespace qve {

namespace {

bool IsTokenWidth(uint64_t width) {
    return width == 1 || width == 2 || width == 4 || width == 8;
}

/// Repeats the first cell over `count` cells.
void Repeat(char* cells, uint64_t width, uint64_t count) {
    const uint64_t bytes = width * count;
    for (uint64_t done = width; done < bytes;) {
        const uint64_t step = std::min(done, bytes - done);
        std::memcpy(cells + done, cells, step);
        done += step;
    }
}

template <class T>
void Enumerate(void* cells, uint64_t count, unsigned long long first) {
    T* const values = static_cast<T*>(cells);
    for (uint64_t i = 0; i < count; ++i) values[i] = static_cast<T>(first + i);
}

}  // namespace

bool Column::CanAppend() const {
    return m_data && m_data->CanExtend() && (!m_dictionary || m_dictionary->CanExtend());
}

bool Column::CanWriteAtom(const usratom& atom) const {
    if (!m_dictionary || m_dictionary->CanExtend() || atom.isnull()) return true;
    return m_heap->find(atom) != usrheap::null_token;
}

void Column::Append(unsigned count, input_column source, const unsigned* selection, bool keepCursor) {
    const uint64_t row = m_row, limit = GetLimit();
    Extend(count);
    Overlay(count, source, selection);
    if (keepCursor) Seek(row, limit);
}

void Column::Append(unsigned count, const usratom& atom, bool keepCursor) {
    const uint64_t row = m_row, limit = GetLimit();
    Extend(count);
    Overlay(count, atom);
    if (keepCursor) Seek(row, limit);
}

void Column::Append(unsigned count, bool keepCursor) {
    const uint64_t row = m_row, limit = GetLimit();
    Extend(count);
    Overlay(count);
    if (keepCursor) Seek(row, limit);
}

void Column::Overlay(unsigned count, input_column source, const unsigned* selection) {
    if (count == 0) return;
    if (source.width != m_tokenSize) throw QVE_LogicError(status::Column_Overlay, "Column::Overlay");
    output_column cells = GetOutput();
    // A kernel says of its output whether it holds nulls; that is about these rows, not about the column.
    unsigned char reported = 0;
    cells.flags = &reported;
    const bool tokens = m_heap && source.heap;
    if ((m_heap && !source.heap) || !IsTokenWidth(m_tokenSize)) {
        // Values that become entries of the dictionary, or cells of a width that no kernel has.
        const usrtype* const type = GetType();
        usratom atom(type);
        for (unsigned i = 0; i < count; ++i) {
            type->get(source, selection ? selection[i] : i, atom);
            type->put(cells, i, atom);
        }
    } else if (selection) {
        input_column index;
        index.data = selection;
        index.width = sizeof *selection;
        index.count = count;
        index.flags = column_flags::not_null;
        const auto fetch = tokens ? map_fetch_ulng_col_usr_col(m_tokenSize) : map_fetch_ulng_col_type_col(m_tokenSize);
        fetch(count, cells, index, source, nullptr);
    } else {
        const auto copy = tokens ? map_usr_usr_col(m_tokenSize) : map_type_type_col(m_tokenSize);
        copy(count, cells, source, nullptr);
    }
}

void Column::Overlay(unsigned count, const usratom& atom) {
    if (count == 0) return;
    const output_column cells = GetOutput();
    if (count > cells.limit) throw QVE_LogicError(status::Column_Overlay, "Column::Overlay");
    // One conversion and one look-up in the dictionary for all rows.
    GetType()->put(cells, 0, atom);
    Repeat(static_cast<char*>(cells.data), m_tokenSize, count);
}

void Column::Overlay(unsigned count) {
    const usratom& value = GetDefaultAtom();
    if (CanWriteAtom(value)) {
        Overlay(count, value);
    } else {
        Overlay(count, usratom(GetType()));
    }
}

void Column::Resize(unsigned long long rows) {
    const uint64_t present = GetCount();
    if (rows < present) m_data->Resize(Bytes(rows));
    for (uint64_t missing = rows > present ? rows - present : 0; missing > 0;) {
        const uint64_t count = std::min({missing, std::max<uint64_t>(GetPageLimit(), 1), uint64_t{1} << 30});
        Append(static_cast<unsigned>(count), true);
        missing -= count;
    }
}

void Column::Mark(unsigned long long rows, unsigned long long base) {
    const uint64_t chunk = std::max<uint64_t>(GetPageLimit(), 1);
    for (uint64_t from = 0; from < rows;) {
        const uint64_t to = from + std::min<uint64_t>(chunk, rows - from);
        if (GetCount() < to) Extend(to - GetCount());
        MarkRange(from, to, base + from);
        from = to;
    }
    m_data->Resize(Bytes(rows));
    m_properties.set(usrpropkey::dense, base);
    m_properties.set(usrpropkey::ordered, L"asc");
    m_properties.set(usrpropkey::unique, true);
    UpdateHints();
}

void Column::MarkRange(unsigned long long from, unsigned long long to, unsigned long long base) {
    if (from > to) throw QVE_InvalidArgument(status::Column_MarkRange_order, "Column::MarkRange");
    if (to > GetCount()) throw QVE_RangeError(status::Column_MarkRange_rows, "Column::MarkRange");
    if (!IsTokenWidth(m_tokenSize)) throw QVE_DomainError(status::Column_MarkRange_width, "Column::MarkRange");
    constexpr uint64_t window = 65536;
    while (from < to) {
        const uint64_t count = std::min<uint64_t>(Seek(from, Rows(window)), to - from);
        void* const cells = GetOutput().data;
        switch (m_tokenSize) {
            case 1:
                Enumerate<uint8_t>(cells, count, base);
                break;
            case 2:
                Enumerate<uint16_t>(cells, count, base);
                break;
            case 4:
                Enumerate<uint32_t>(cells, count, base);
                break;
            default:
                Enumerate<uint64_t>(cells, count, base);
                break;
        }
        from += count;
        base += count;
    }
}

}  // namespace qve
