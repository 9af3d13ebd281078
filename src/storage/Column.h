#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "storage/stream/DataStream.h"
#include "system/RefCntObject.h"
#include "system/RefCntPtr.h"
#include "types/input_column.h"
#include "types/output_column.h"
#include "types/usratom.h"
#include "types/usrheap.h"
#include "types/usrprops.h"
#include "types/usrtype.h"

namespace qve {

/// The unit of storage of a table, and of a page in flight: a property set that says what the values mean, a data
/// stream with one fixed-width cell per row and, for a compressed column, a dictionary stream with a heap over it. A
/// cell of a plain column is the value itself; of an "array" column the ordinal of a dictionary entry; of a "heap"
/// column the offset of one.
///
/// Positions and counts are in rows unless a name says otherwise. Pointers in the views that GetInput and GetOutput
/// give hold until the next Seek, Extend, Append, Resize or change of streams. One thread per object; threads that read
/// one table each take a Fork.
class Column : public RefCntObject {
public:
    /// Takes over the property set; both streams may be null. A data stream without a dictionary is refused for a set
    /// with `compression`: QVE_InvalidArgument 40064.
    explicit Column(usrprops properties, RefCntPtr<DataStream> data = nullptr,
                    RefCntPtr<DataStream> dictionary = nullptr);
    /// A copy with other data (or none) and a heap of its own on the same dictionary stream. 40065 as above.
    Column(const Column& other, RefCntPtr<DataStream> data);
    Column(const Column&) = delete;
    Column& operator=(const Column&) = delete;
    ~Column() override;

    // Names of the columns derived from a column: suffixes in listings and plans.
    static const std::wstring nameDict;   ///< ".DICT"
    static const std::wstring nameFreq;   ///< ".FREQ"
    static const std::wstring nameRank;   ///< ".RANK"
    static const std::wstring nameStart;  ///< ".START"
    static const std::wstring nameCount;  ///< ".COUNT"

    // Storage classes, the values of the property `storagetype`.
    static const std::wstring storageCol;  ///< "col", one value per row
    static const std::wstring storageVal;  ///< "val", one value for all rows
    static const std::wstring storageVir;  ///< "vir", the row number, nothing stored

    /// Entries of a dictionary up to which it is searched without a sorted index. Default 32768.
    static std::atomic<uint64_t> s_usrAcceleratorThreshold;
    static void setAcceleratorThreshold(uint64_t entries) { s_usrAcceleratorThreshold = entries; }

    // Properties.

    const usrprops& GetProperties() const { return m_properties; }
    bool HasProperty(usrpropkey key) const { return m_properties.has(key); }
    /// Throws QVE_RangeError 40070 when the key is absent.
    const std::wstring& GetProperty(usrpropkey key) const;
    /// The decimal number in a property, 0 when it is absent.
    uint64_t GetSizeProperty(usrpropkey key) const;
    void SetProperty(usrpropkey key, const std::wstring& value);
    void ClearProperty(usrpropkey key);
    /// The property `name`, empty when absent.
    const std::wstring& GetName() const;
    void SetName(const std::wstring& name) { SetProperty(usrpropkey::name, name); }
    /// The type of the values, also for a compressed column. Immortal. Raises what usrtype::resolve raises when the
    /// properties denote none.
    const usrtype* GetType() const;
    /// Replaces the properties of the old type by those of the new, and rebuilds the heap.
    void SetType(const usrtype* type);
    DataType GetDataType() const { return m_dataType; }
    bool IsCompressed() const { return m_compressed; }
    /// Name of the type under which kernels process the cells. For a compressed column: "uchr", "usht", "ulng" or "oid"
    /// when it carries the property `key`, so that its tokens may stand for the values, else "usr1" to "usr8". For a
    /// plain column its type.
    std::wstring GetPrimitiveType(usrpropkey key) const;
    /// "col", "val" or "vir".
    const std::wstring& GetStorageName() const { return m_storage; }
    /// Width of a cell in bytes, at least 1.
    unsigned GetTokenSize() const { return m_tokenSize; }
    /// Width of a dictionary entry of an "array" column in bytes.
    unsigned GetEntrySize() const { return m_entrySize; }
    /// column_flags as the views carry them. Kernels report on their output here.
    unsigned char GetFlags() const { return m_flags; }
    void SetFlags(unsigned char flags) { m_flags = flags; }
    /// The value that Append(count) writes: the property `default-value`, else null.
    const usratom& GetDefaultAtom() const;

    // Streams.

    const RefCntPtr<DataStream>& GetData() const { return m_data; }
    const RefCntPtr<DataStream>& GetDict() const { return m_dictionary; }
    /// The heap over the dictionary stream; null without one. Owned by the column.
    usrheap* GetHeap() const { return m_heap.get(); }
    /// Replaces the data stream, keeps `encoding` in step, and returns the old one.
    RefCntPtr<DataStream> SetData(RefCntPtr<DataStream> data);
    /// Replaces the dictionary stream and rebuilds the heap; returns the old one.
    RefCntPtr<DataStream> SetDict(RefCntPtr<DataStream> dictionary);
    /// Takes both streams of another column, with its window. Cheap: nothing is allocated when the dictionary is the
    /// same as before, so that pages can be passed on by it.
    void ShareStreams(const Column& other);
    /// A column with the same properties over forks of both streams.
    RefCntPtr<Column> Fork(bool readOnly) const;

    /// Rows in the data stream.
    uint64_t GetCount() const { return m_data ? Rows(m_data->GetSize()) : 0; }
    /// Rows in the present window, from the cursor on.
    uint64_t GetLimit() const { return m_data ? Rows(m_data->GetLimit()) : 0; }
    /// Rows that a window holds by the stream's page limit.
    uint64_t GetPageLimit() const { return m_data ? Rows(m_data->GetPageLimit()) : 0; }
    /// The row at the start of the window, as the last Seek or Extend left it.
    uint64_t GetCursor() const { return m_row; }

    // Reading and writing of windows.

    /// Makes at least `count` rows from `row` available, as far as there are any, and returns the limit.
    uint64_t Seek(uint64_t row, uint64_t count) {
        m_row = row;
        return Rows(m_data->Seek(Bytes(row), Bytes(count)));
    }
    /// Touches rows, so that their pages are in memory.
    uint64_t Load(uint64_t row, uint64_t count) const { return m_data->Load(Bytes(row), Bytes(count)); }
    /// The cells from cursor + `offset` rows on, to read. The column must have a data stream unless its storage is
    /// "vir".
    input_column GetInput(unsigned offset = 0) const {
        input_column view;
        view.heap = m_heap.get();
        view.width = m_tokenSize;
        view.flags = m_flags;
        if (m_data) {
            view.data = m_data->GetInput(Bytes(offset));
            view.count = Clamp(Rows(m_data->GetLimit()) - offset);
        }
        return view;
    }
    /// The same to write.
    output_column GetOutput(unsigned offset = 0) {
        output_column view;
        view.data = m_data->GetOutput(Bytes(offset));
        view.heap = m_heap.get();
        view.width = m_tokenSize;
        view.limit = Clamp(Rows(m_data->GetLimit()) - offset);
        view.flags = &m_flags;
        return view;
    }
    /// The entries of an "array" dictionary from its stream's cursor + `offset` entries on; plain values of `size`
    /// bytes.
    input_column GetDictionaryInput(unsigned offset = 0) const;
    /// Adds `count` rows of no particular value and leaves the window on them. Returns the limit.
    uint64_t Extend(uint64_t count);

    // Growing and overwriting. Overlay writes at the cursor, within the window. Append adds rows and leaves the window
    // on them, or with `keepCursor` where it was.

    virtual bool CanAppend() const;
    /// Whether a value can be stored: always for a plain column, null and a dictionary that may grow; else when the
    /// dictionary holds it already.
    virtual bool CanWriteAtom(const usratom& atom) const;
    /// @param selection positions within `source` of the rows to take, or null for the first `count`
    virtual void Append(unsigned count, input_column source, const unsigned* selection, bool keepCursor);
    virtual void Append(unsigned count, const usratom& atom, bool keepCursor);
    virtual void Append(unsigned count, bool keepCursor);
    /// Throws logic error 40074 when the widths differ.
    virtual void Overlay(unsigned count, input_column source, const unsigned* selection);
    virtual void Overlay(unsigned count, const usratom& atom);
    /// The default value, or null when the dictionary does not take it.
    virtual void Overlay(unsigned count);
    /// Cuts rows off, or adds rows of the default value.
    virtual void Resize(unsigned long long rows);
    /// Makes row i hold base + i, for exactly `rows` rows: a column of row numbers.
    virtual void Mark(unsigned long long rows, unsigned long long base);
    /// Makes rows `from` to `to` hold `base` onwards. Throws 40071 when from > to, 40072 when `to` is above the rows,
    /// 40073 for a width that is not 1, 2, 4 or 8.
    virtual void MarkRange(unsigned long long from, unsigned long long to, unsigned long long base);
    /// Rewrites the tokens with another width into the stream `target`, which becomes the data stream. False, and
    /// nothing done, when the column is not compressed, has this width, or its dictionary needs a wider one.
    virtual bool SetTokenSize(RefCntPtr<DataStream> target, unsigned size);
    /// The least of 1, 2, 4, 8 bytes, not above the present width, that holds every token.
    virtual unsigned GetMinimalTokenSize() const;
    /// SetTokenSize to the minimum; false when that is the present width.
    virtual bool MinimiseTokens(RefCntPtr<DataStream> target);

    // Dictionaries.

    /// The token of a value, for predicates; all ones when the dictionary does not hold it. Builds an index over a big
    /// sorted dictionary on first use.
    uint64_t GetDictionaryToken(const usratom& atom) const;
    /// True for a plain column; else whether the dictionary's index knows all its entries.
    bool IsAcceleratorComplete() const;
    /// Brings `distinct`, `cardinality`, `comparable`, `min-value` and `max-value` in step with the dictionary's index.
    void UpdateAcceleratorProperties();

    // Views of the parts.

    /// The tokens as a plain column of "uchr", "usht", "ulng" or "oid", sharing the data stream. 40066 for another
    /// width.
    RefCntPtr<Column> GetDataColumn() const;
    /// The dictionary of an "array" column as a plain column of the values, one row per entry, sharing the dictionary
    /// stream. 40067 for a plain column, 40068 for a "heap".
    RefCntPtr<Column> GetDictionaryColumn() const;
    /// A new column ".FREQ" of "oid": how many rows hold each dictionary entry, in the order of the entries. 40069 for
    /// a plain column.
    RefCntPtr<Column> GetFrequencyColumn() const;

private:
    uint64_t Bytes(uint64_t rows) const { return m_shift < 64 ? rows << m_shift : rows * m_tokenSize; }
    uint64_t Rows(uint64_t bytes) const { return m_shift < 64 ? bytes >> m_shift : bytes / m_tokenSize; }
    static unsigned Clamp(uint64_t rows) { return rows > 0xFFFFFFFFu ? 0xFFFFFFFFu : static_cast<unsigned>(rows); }
    /// Recomputes what is derived from the properties.
    void UpdateHints();
    void ResolveType();
    void MakeHeap();
    void SetEncodingProperty();

    usrprops m_properties;
    RefCntPtr<DataStream> m_data;
    RefCntPtr<DataStream> m_dictionary;
    std::unique_ptr<usrheap> m_heap;
    const usrtype* m_type = nullptr;
    DataType m_dataType = DataType::usr;
    uint32_t m_tokenSize = 1;
    uint32_t m_shift = 0;  // log2 of the token size; 64 when it is no power of two
    uint32_t m_entrySize = 0;
    mutable std::optional<usratom> m_default;  // made when first asked for
    unsigned char m_flags = 0;
    bool m_compressed = false;
    std::wstring m_storage;
    uint64_t m_row = 0;
};

}  // namespace qve
