#pragma once

#include <atomic>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "algebra/DataFlow.h"
#include "ingest/TextColumnParser.h"
#include "types/parse_config.h"
#include "types/usrprops.h"

namespace qve {

class DataStream;
class FieldSplitter;
class TextChunk;
class TextFileDataStream;

/// The records of a delimited text. What it is not told it finds out from the first 10,000 records or more: the
/// character set, the delimiters, whether there is a header, the columns and their types. All columns of a page are
/// parsed in parallel, while the records behind them are read and split. A field that is no value of its column's type
/// is null and counted; it never ends the scan.
class TextScan : public DataFlow {
public:
    /// How many records the types are found from, at the least.
    static constexpr unsigned sampleRecords = 10000;
    /// A text with more columns is refused.
    static constexpr unsigned maxColumns = 16384;
    /// The size of the first window of text, in KiB, in which the record delimiter is looked for; the setting
    /// `record-separator-textscan-limit`.
    static unsigned GetRecordSeparatorScanLimitK() { return s_recordSeparatorScanLimit; }
    static void SetRecordSeparatorScanLimitK(unsigned kilobytes) { s_recordSeparatorScanLimit = kilobytes; }

    /// Opens a file for a scan. Throws QVE_RuntimeError 40563 when there is no such file, and what the system raises.
    static RefCntPtr<DataStream> OpenFile(const std::wstring& path);

    /// `columns` says of the first columns of the text what is known of them, such as name and type; it may be empty.
    /// `properties` is what is known of the format. Only the columns `wanted` show, all when it is empty. Throws
    /// QVE_LogicError 40561 "Text file has no lines" and 40562 "Text file has no rows", QVE_RuntimeError 40565
    /// for more columns than maxColumns, and what the parsers raise.
    TextScan(RefCntPtr<DataStream> stream, std::vector<usrprops> columns, usrprops properties,
             const ColumnNames& wanted = {});
    ~TextScan() override;
    void Accept(OperatorVisitor& visitor) override;

    /// What is known of the format, given and found: with these a further scan needs no detection.
    const usrprops& GetTextProperties() const { return m_properties; }
    /// The columns of the text, in their order: name, type, ordinal.
    const std::vector<usrprops>& GetSchema() const { return m_schema; }
    /// The path of the file that is scanned; empty for a text that is no file.
    std::wstring GetPath() const;
    /// How many bytes of the file have been read, of how many; of a text that is no file, those of the records that
    /// were parsed. Any thread may ask.
    uint64_t GetTextCursor() const;
    uint64_t GetTextSize() const { return m_textSize; }

    uint64_t GetCursor() const override { return m_cursor.load(std::memory_order_relaxed); }
    uint64_t GetPreviousCursor() const override { return m_previousCursor.load(std::memory_order_relaxed); }
    void ResetCursor() override;
    /// Throws CancelledException after SetCancelled.
    unsigned Next(unsigned pageSize) override;
    RefCntPtr<Column> LoadColumn(const std::wstring& name) const override;
    RefCntPtr<Column> LookupColumn(const std::wstring& name) const override;
    /// Ends the scan with CancelledException at the Next that runs or comes. Any thread may call it.
    void SetCancelled() { m_cancelled = true; }

private:
    struct Partitioner;
    class ReadAhead;
    struct ScannedColumn {
        unsigned place;  // in the text
        RefCntPtr<TextColumnParser> parser;
    };

    void DetectFormat(const usrprops& given);
    void DetectColumns(std::vector<usrprops> columns, const usrprops& given);
    bool DetectHeader(const TextColumnParsers& best) const;
    bool HeaderByText() const;
    void ReportErrors() const;
    void ShowColumns(const ColumnNames& wanted);
    /// Makes the next records the ones at hand, and has those behind them read meanwhile; false at the end.
    bool FindRows();
    const ScannedColumn* Find(const std::wstring& name) const;

    RefCntPtr<TextFileDataStream> m_file;  // null for a text that is no file
    RefCntPtr<DataStream> m_stream;        // over the file, if there is one: plain text in UTF-8
    usrprops m_properties;
    parse_config m_config;
    std::unique_ptr<FieldSplitter> m_splitter;
    std::vector<usrprops> m_schema;
    TextColumnParsers m_prototypes;  // one for each column of the text
    bool m_hasHeader = false;
    unsigned m_columnCount = 0;
    std::vector<ScannedColumn> m_scanned;

    std::unique_ptr<TextChunk> m_chunk;  // the records at hand
    unsigned m_nextRecord = 0;
    std::unique_ptr<ReadAhead> m_ahead;
    bool m_started = false;

    std::unique_ptr<Partitioner> m_partitioner;
    uint64_t m_textSize = 0;
    // Progress is asked for by other threads.
    std::atomic<uint64_t> m_textCursor{0};
    std::atomic<uint64_t> m_cursor{0};
    std::atomic<uint64_t> m_previousCursor{0};
    std::atomic<bool> m_cancelled{false};

    static std::atomic<unsigned> s_recordSeparatorScanLimit;
};

}  // namespace qve
