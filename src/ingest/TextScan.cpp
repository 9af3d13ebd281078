#include "ingest/TextScan.h"

#include <tbb/parallel_for.h>
#include <tbb/partitioner.h>
#include <tbb/task_group.h>

#include <algorithm>
#include <set>
#include <utility>

#include "algebra/OperatorVisitor.h"
#include "ingest/DecompressingDataStream.h"
#include "ingest/FieldSplitter.h"
#include "ingest/TextChunk.h"
#include "ingest/TextColumnNames.h"
#include "ingest/TextFileDataStream.h"
#include "ingest/TextFormatDetection.h"
#include "ingest/TextProperties.h"
#include "ingest/TextSchemaCache.h"
#include "ingest/TranscodingDataStream.h"
#include "ingest/status.h"
#include "os/Path.h"
#include "storage/Column.h"
#include "system/QuillonException.h"
#include "system/unicode.h"

namespace qve {
namespace {

constexpr size_t first_chunk = size_t{4} << 20;  // the sample
constexpr size_t scan_chunk = size_t{1} << 20;   // stays in cache between splitting and parsing
constexpr size_t largest_sample = size_t{64} << 20;

const std::wstring header_yes = L"true";
const std::wstring header_no = L"false";

}  // namespace

struct TextScan::Partitioner {
    tbb::affinity_partitioner affinity;  // a column stays with its worker
};

/// Reads and splits the next chunk while another is parsed. It has the stream to itself.
class TextScan::ReadAhead {
public:
    ReadAhead(DataStream& stream, const FieldSplitter& splitter, unsigned columns)
        : m_stream(stream), m_splitter(splitter), m_columns(columns) {}
    ~ReadAhead() { Stop(); }

    /// Begins to read from `position` on.
    void Start(uint64_t position) {
        m_reading.run([this, position] {
            m_found = m_chunk.Read(m_stream, position, m_size, m_splitter);
            if (!m_found) return;
            m_chunk.Arrange(m_columns);
            m_size = std::max(m_size, m_chunk.GetSize());
        });
    }
    /// Waits for the chunk and exchanges it for `chunk`; false at the end. Throws what the reading threw.
    bool Take(TextChunk& chunk) {
        if (m_reading.wait() == tbb::task_group_status::canceled) throw CancelledException();
        if (m_found) std::swap(m_chunk, chunk);
        return std::exchange(m_found, false);
    }
    /// Waits for what runs, whatever comes of it.
    void Stop() noexcept {
        try {
            m_reading.wait();
        } catch (...) {
            m_found = false;  // nobody asked for this chunk
        }
    }

private:
    DataStream& m_stream;
    const FieldSplitter& m_splitter;
    const unsigned m_columns;
    size_t m_size = scan_chunk;  // grows for good with the records
    TextChunk m_chunk;
    bool m_found = false;
    tbb::task_group m_reading;
};

std::atomic<unsigned> TextScan::s_recordSeparatorScanLimit{8192};

RefCntPtr<DataStream> TextScan::OpenFile(const std::wstring& path) {
    if (!Path::isfile(path)) {
        throw QVE_RuntimeError(status::TextScan_OpenFile, "TextScan::OpenFile: no such file: " + narrow(path));
    }
    return MakeRef<TextFileDataStream>(path);
}

TextScan::TextScan(RefCntPtr<DataStream> stream, std::vector<usrprops> columns, usrprops properties,
                   const ColumnNames& wanted)
    : DataFlow(nullptr, {}),
      m_file(DynamicPtrCast<TextFileDataStream>(stream)),
      m_stream(DecompressingDataStream::CreatePlainStream(stream)),
      m_properties(properties),
      m_chunk(std::make_unique<TextChunk>()),
      m_partitioner(std::make_unique<Partitioner>()) {
    const TextSchemaCache::Key key{m_file.get(), columns, properties};
    if (auto known = TextSchemaCache::Find(key)) {
        m_properties = known->properties;
        m_schema = known->schema;
        m_prototypes = known->prototypes;
    }
    std::string charset = narrow(m_properties.text(usrpropkey::character_set));
    m_stream = TranscodingDataStream::CreateUTF8Stream(m_stream, charset);
    m_properties.set(usrpropkey::character_set, widen(charset));
    m_textSize = m_file ? m_file->GetSize() : m_stream->GetSize();
    GetConfigFromTextProps(m_config, m_properties);

    if (m_prototypes.empty()) {
        DetectFormat(properties);
        DetectColumns(std::move(columns), properties);
        TextSchemaCache::Add(key, {m_properties, m_schema, m_prototypes});
    }
    m_splitter = std::make_unique<FieldSplitter>(m_config);
    m_hasHeader = m_properties.text(usrpropkey::header_row) == header_yes;
    m_columnCount = static_cast<unsigned>(m_schema.size());
    ShowColumns(wanted);
    m_ahead = std::make_unique<ReadAhead>(*m_stream, *m_splitter, m_columnCount);
    ResetCursor();
}

TextScan::~TextScan() = default;

void TextScan::Accept(OperatorVisitor& visitor) {
    visitor.VisitTextScan(*this);
}

void TextScan::DetectFormat(const usrprops& given) {
    const uint64_t limit = uint64_t{1024} * std::max(1U, GetRecordSeparatorScanLimitK());
    const uint64_t available = std::min(m_stream->Seek(0, limit), limit);
    const std::string_view window(available ? m_stream->GetInput(0) : "", available);
    DetermineRecordSeparator(window, given, m_config, m_properties);
    // The other points need whole records.
    std::string_view sample = window.substr(0, first_chunk);
    const size_t last = sample.rfind(m_config.record_delimiter);
    if (last != std::string_view::npos) sample = sample.substr(0, last + 1);
    DetermineFieldSeparator(sample, given, m_config, m_properties);
    ValidateQuotes(sample, given, m_config, m_properties);
}

void TextScan::DetectColumns(std::vector<usrprops> columns, const usrprops& given) {
    m_splitter = std::make_unique<FieldSplitter>(m_config);
    // As many records as the sample needs, in one chunk.
    for (size_t size = first_chunk;; size *= 2) {
        if (!m_chunk->Read(*m_stream, 0, size, *m_splitter)) {
            throw QVE_LogicError(status::TextScan_NoRows, "Text file has no rows");
        }
        if (m_chunk->IsLast() || m_chunk->GetLines() > sampleRecords || size >= largest_sample) break;
    }
    m_columnCount = m_chunk->CountColumns();
    // Columns that are described beyond the text's are empty throughout.
    m_columnCount = std::max(m_columnCount, static_cast<unsigned>(columns.size()));
    if (m_columnCount > maxColumns) {
        throw QVE_RuntimeError(status::TextScan_TooManyColumns,
                               "TextScan: a record has " + std::to_string(m_columnCount) + " fields, the limit is " +
                                   std::to_string(maxColumns) + "; is the field delimiter right?");
    }
    columns.resize(m_columnCount);
    m_chunk->Arrange(m_columnCount);
    const unsigned records = m_chunk->GetRecords();
    if (records == 0) throw QVE_LogicError(status::TextScan_NoRows, "Text file has no rows");

    const auto choose = [&](unsigned first) {
        TextColumnParsers best(columns.size());
        tbb::parallel_for(size_t{0}, columns.size(), [&](size_t place) {
            best[place] = ChooseParser(
                GetTypeParsers(m_config, m_properties, columns[place]),
                [&](TextColumnParser& parser, unsigned from, unsigned count) {
                    parser.Reset(count);
                    parser.Parse(count, 0, from, m_chunk->GetFields(first + from, static_cast<unsigned>(place)));
                },
                records - first);
        });
        return best;
    };
    TextColumnParsers best = choose(records > 1 ? 1 : 0);
    if (given.has(usrpropkey::header_row)) {
        m_hasHeader = given.text(usrpropkey::header_row) == header_yes;
    } else {
        m_hasHeader = records > 1 && DetectHeader(best);
        m_properties.set(usrpropkey::header_row, m_hasHeader ? header_yes : header_no);
    }
    if (m_hasHeader && records == 1) throw QVE_LogicError(status::TextScan_NoRows, "Text file has no rows");
    if (!m_hasHeader && records > 1) best = choose(0);

    std::vector<std::wstring> headers(columns.size());
    for (unsigned place = 0; place < columns.size(); ++place) {
        if (columns[place].has(usrpropkey::name)) {
            headers[place] = columns[place].text(usrpropkey::name);
        } else if (m_hasHeader) {
            headers[place] = ParseColumnName(m_chunk->GetField(0, place), m_config);
        }
    }
    const std::vector<TextColumnName> names = MakeColumnNames(headers);
    for (unsigned place = 0; place < columns.size(); ++place) {
        usrprops column = best[place]->GetType();
        column.set(usrpropkey::name, names[place].name);
        if (!names[place].description.empty()) column.set(usrpropkey::description, names[place].description);
        column.set(usrpropkey::ordinal, place);
        m_schema.push_back(std::move(column));
        m_prototypes.push_back(best[place]->Clone());
    }
}

// A header is there when some column's values are of a type that its first field is not of; in a text of text alone,
// when the first record looks unlike the others.
bool TextScan::DetectHeader(const TextColumnParsers& best) const {
    unsigned unlike = 0;
    unsigned alike = 0;
    for (unsigned place = 0; place < best.size(); ++place) {
        if (best[place]->GetColumn()->IsCompressed()) continue;
        const RefCntPtr<TextColumnParser> probe = best[place]->Clone();
        probe->Reset(1);
        probe->Parse(1, 0, 0, m_chunk->GetFields(0, place));
        if (probe->GetNonEmpty() == 0) continue;
        ++(probe->GetErrors() ? unlike : alike);
    }
    if (unlike + alike > 0) return unlike > 0 && unlike >= alike;
    return HeaderByText();
}

bool TextScan::HeaderByText() const {
    const unsigned records = m_chunk->GetRecords();
    bool evidence = false;
    for (unsigned place = 0; place < m_columnCount; ++place) {
        const std::string_view first = m_chunk->GetField(0, place);
        if (first.empty() || first == "\r") return false;  // a header has names
        bool repeated = false;
        bool oneLength = true;
        std::set<std::string_view> distinct;
        const size_t length = m_chunk->GetField(1, place).size();
        for (unsigned record = 1; record < records && !repeated; ++record) {
            const std::string_view value = m_chunk->GetField(record, place);
            repeated = value == first;
            oneLength &= value.size() == length;
            if (distinct.size() <= records / 2) distinct.insert(value);
        }
        if (repeated) return false;
        evidence |= oneLength && records > 2 && length != first.size();
        evidence |= records > 4 && distinct.size() <= records / 2;
    }
    return evidence;
}

void TextScan::ShowColumns(const ColumnNames& wanted) {
    // The tokens of a dictionary as large as the whole text must fit: an entry takes up to 7/4 of the field's bytes.
    const bool wide = m_textSize / 4 * 7 > 0xFFFFFFFFULL - (1 << 20);
    for (unsigned place = 0; place < m_schema.size(); ++place) {
        const std::wstring& name = *m_schema[place].get(usrpropkey::name);
        if (!wanted.empty() && wanted.count(name) == 0) continue;
        RefCntPtr<TextColumnParser> parser = m_prototypes[place]->Clone();
        usrprops properties = m_schema[place];
        if (properties.has(usrpropkey::compression)) properties.set(usrpropkey::storagewidth, wide ? L"8" : L"4");
        parser->MakeColumn(properties);
        m_columns[name] = nullptr;
        m_scanned.push_back({place, std::move(parser)});
    }
}

std::wstring TextScan::GetPath() const {
    return m_file ? m_file->GetPath() : std::wstring();
}

uint64_t TextScan::GetTextCursor() const {
    return m_file ? m_file->GetPosition() : m_textCursor.load(std::memory_order_relaxed);
}

void TextScan::ResetCursor() {
    m_ahead->Stop();
    *m_chunk = {};
    m_nextRecord = 0;
    m_started = false;
    m_cursor = 0;
    m_previousCursor = 0;
    m_textCursor = 0;
    for (const ScannedColumn& scanned : m_scanned) scanned.parser->ClearErrors();
}

bool TextScan::FindRows() {
    if (!m_started) m_ahead->Start(0);
    if (!m_ahead->Take(*m_chunk)) return false;
    m_ahead->Start(m_chunk->GetEnd());
    m_nextRecord = !m_started && m_hasHeader && m_chunk->GetRecords() > 0 ? 1 : 0;
    m_started = true;
    return true;
}

unsigned TextScan::Next(unsigned pageSize) {
    m_previousCursor.store(GetCursor(), std::memory_order_relaxed);
    if (pageSize == 0) return SetPage(0);
    if (m_cancelled.load(std::memory_order_relaxed)) throw CancelledException();
    while (m_nextRecord == m_chunk->GetRecords()) {
        if (!FindRows()) {
            ReportErrors();
            return SetPage(0);
        }
    }
    const unsigned count = std::min(pageSize, m_chunk->GetRecords() - m_nextRecord);
    const uint64_t row = GetCursor();
    tbb::parallel_for(
        tbb::blocked_range<size_t>(0, m_scanned.size(), 1),
        [&](const tbb::blocked_range<size_t>& range) {
            for (size_t i = range.begin(); i != range.end(); ++i) {
                TextColumnParser& parser = *m_scanned[i].parser;
                parser.Reset(count);
                parser.Parse(count, 0, row, m_chunk->GetFields(m_nextRecord, m_scanned[i].place));
            }
        },
        m_partitioner->affinity);
    m_nextRecord += count;
    m_cursor.store(row + count, std::memory_order_relaxed);
    m_textCursor.store(m_chunk->GetEnd(), std::memory_order_relaxed);
    return SetPage(count);
}

void TextScan::ReportErrors() const {
    for (const ScannedColumn& scanned : m_scanned) {
        const TextColumnParser& parser = *scanned.parser;
        if (parser.GetErrors() == 0) continue;
        parser.GetColumn()->SetProperty(usrpropkey::count_errors, std::to_wstring(parser.GetErrors()));
        parser.GetColumn()->SetProperty(usrpropkey::first_error, std::to_wstring(parser.GetFirstError()));
        parser.GetColumn()->SetProperty(usrpropkey::last_error, std::to_wstring(parser.GetLastError()));
    }
}

const TextScan::ScannedColumn* TextScan::Find(const std::wstring& name) const {
    const auto found = std::find_if(m_scanned.begin(), m_scanned.end(), [&name](const ScannedColumn& scanned) {
        return scanned.parser->GetColumn()->GetName() == name;
    });
    return found == m_scanned.end() ? nullptr : &*found;
}

RefCntPtr<Column> TextScan::LoadColumn(const std::wstring& name) const {
    const ScannedColumn* scanned = Find(name);
    return scanned ? scanned->parser->GetColumn() : DataFlow::LoadColumn(name);
}

RefCntPtr<Column> TextScan::LookupColumn(const std::wstring& name) const {
    const ScannedColumn* scanned = Find(name);
    return scanned ? scanned->parser->GetColumn() : DataFlow::LookupColumn(name);
}

}  // namespace qve
