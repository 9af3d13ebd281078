#include "ingest/TextScan.h"

#include <tbb/parallel_for.h>
#include <tbb/partitioner.h>

#include <algorithm>
#include <set>

#include "algebra/OperatorVisitor.h"
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
constexpr size_t largest_chunk = size_t{1} << 30;

const std::wstring header_yes = L"true";
const std::wstring header_no = L"false";

}  // namespace

struct TextScan::Partitioner {
    tbb::affinity_partitioner affinity;  // a column stays with its worker
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
      m_stream(std::move(stream)),
      m_properties(properties),
      m_chunkSize(first_chunk),
      m_partitioner(std::make_unique<Partitioner>()) {
    const auto* file = dynamic_cast<const TextFileDataStream*>(m_stream.get());
    const TextSchemaCache::Key key{file, columns, properties};
    if (auto known = TextSchemaCache::Find(key)) {
        m_properties = known->properties;
        m_schema = known->schema;
        m_prototypes = known->prototypes;
    }
    std::string charset = narrow(m_properties.text(usrpropkey::character_set));
    m_stream = TranscodingDataStream::CreateUTF8Stream(m_stream, charset);
    m_properties.set(usrpropkey::character_set, widen(charset));
    m_textSize = m_stream->GetSize();
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

std::string_view TextScan::Field(unsigned record, unsigned place) const {
    const TextFields fields = Fields(record, place);
    // The first field has its delimiter at -1: this wraps to 0 in 32 bits only.
    const unsigned begin = fields.begins[0] + 1;
    return {m_text + begin, fields.ends[0] - begin};
}

void TextScan::DetectColumns(std::vector<usrprops> columns, const usrprops& given) {
    m_splitter = std::make_unique<FieldSplitter>(m_config);
    // As many records as the sample needs, in one window.
    for (m_chunkSize = first_chunk;; m_chunkSize *= 2) {
        m_position = 0;
        m_split.length = 0;
        m_records = 0;
        m_columnCount = 1;
        if (!FindRows()) throw QVE_LogicError(status::TextScan_NoRows, "Text file has no rows");
        const bool whole = m_stream->GetLimit() <= m_chunkSize;
        if (whole || m_split.records.size() > sampleRecords || m_chunkSize >= (size_t{64} << 20)) break;
    }
    unsigned before = 0;
    m_columnCount = 0;
    for (const unsigned last : m_split.records) {
        m_columnCount = std::max(m_columnCount, last - before);
        before = last;
    }
    // Columns that are described beyond the text's are empty throughout.
    m_columnCount = std::max(m_columnCount, static_cast<unsigned>(columns.size()));
    if (m_columnCount > maxColumns) {
        throw QVE_RuntimeError(status::TextScan_TooManyColumns,
                               "TextScan: a record has " + std::to_string(m_columnCount) + " fields, the limit is " +
                                   std::to_string(maxColumns) + "; is the field delimiter right?");
    }
    columns.resize(m_columnCount);
    m_records = split_ragged_fields_char_col(m_text, m_split, m_columnCount, m_begins, m_ends);
    m_ragged = true;
    if (m_records == 0) throw QVE_LogicError(status::TextScan_NoRows, "Text file has no rows");

    const auto choose = [&](unsigned first) {
        TextColumnParsers best(columns.size());
        tbb::parallel_for(size_t{0}, columns.size(), [&](size_t place) {
            best[place] = ChooseParser(
                GetTypeParsers(m_config, m_properties, columns[place]),
                [&](TextColumnParser& parser, unsigned from, unsigned count) {
                    parser.Reset(count);
                    parser.Parse(count, 0, from, Fields(first + from, static_cast<unsigned>(place)));
                },
                m_records - first);
        });
        return best;
    };
    TextColumnParsers best = choose(m_records > 1 ? 1 : 0);
    if (given.has(usrpropkey::header_row)) {
        m_hasHeader = given.text(usrpropkey::header_row) == header_yes;
    } else {
        m_hasHeader = m_records > 1 && DetectHeader(best);
        m_properties.set(usrpropkey::header_row, m_hasHeader ? header_yes : header_no);
    }
    if (m_hasHeader && m_records == 1) throw QVE_LogicError(status::TextScan_NoRows, "Text file has no rows");
    if (!m_hasHeader && m_records > 1) best = choose(0);

    std::vector<std::wstring> headers(columns.size());
    for (unsigned place = 0; place < columns.size(); ++place) {
        if (columns[place].has(usrpropkey::name)) {
            headers[place] = columns[place].text(usrpropkey::name);
        } else if (m_hasHeader) {
            headers[place] = ParseColumnName(Field(0, place), m_config);
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
        probe->Parse(1, 0, 0, Fields(0, place));
        if (probe->GetNonEmpty() == 0) continue;
        ++(probe->GetErrors() ? unlike : alike);
    }
    if (unlike + alike > 0) return unlike > 0 && unlike >= alike;
    return HeaderByText();
}

bool TextScan::HeaderByText() const {
    bool evidence = false;
    for (unsigned place = 0; place < m_columnCount; ++place) {
        const std::string_view first = Field(0, place);
        if (first.empty() || first == "\r") return false;  // a header has names
        bool repeated = false;
        bool oneLength = true;
        std::set<std::string_view> distinct;
        const size_t length = Field(1, place).size();
        for (unsigned record = 1; record < m_records && !repeated; ++record) {
            const std::string_view value = Field(record, place);
            repeated = value == first;
            oneLength &= value.size() == length;
            if (distinct.size() <= m_records / 2) distinct.insert(value);
        }
        if (repeated) return false;
        evidence |= oneLength && m_records > 2 && length != first.size();
        evidence |= m_records > 4 && distinct.size() <= m_records / 2;
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
    const auto* file = dynamic_cast<const TextFileDataStream*>(m_stream.get());
    return file ? file->GetPath() : std::wstring();
}

void TextScan::ResetCursor() {
    m_position = 0;
    m_split.length = 0;
    m_split.records.clear();
    m_records = 0;
    m_nextRecord = 0;
    m_chunkSize = scan_chunk;
    m_started = false;
    m_cursor = 0;
    m_previousCursor = 0;
    m_textCursor = 0;
    for (const ScannedColumn& scanned : m_scanned) scanned.parser->ClearErrors();
}

bool TextScan::FindRows() {
    m_position += m_split.length;
    m_split.length = 0;
    for (;; m_chunkSize *= 2) {
        const uint64_t limit = m_stream->Seek(m_position, m_chunkSize + 1);
        const bool final = limit <= m_chunkSize;
        const size_t length = std::min<uint64_t>(limit, m_chunkSize);
        m_text = length ? m_stream->GetInput(0) : "";
        m_splitter->Split(m_text, length, final, m_split);
        if (!m_split.records.empty()) break;
        if (final || m_chunkSize >= largest_chunk) return false;
    }
    m_records = static_cast<unsigned>(m_split.records.size());
    m_nextRecord = 0;
    m_ragged = false;
    for (unsigned record = 0; record < m_records && !m_ragged; ++record) {
        m_ragged = m_split.records[record] != (record + 1) * m_columnCount;
    }
    if (m_ragged) {
        m_records = split_ragged_fields_char_col(m_text, m_split, m_columnCount, m_begins, m_ends);
    } else {
        // One entry before the first makes each field begin at the delimiter before its own.
        m_begins.resize(m_split.delimiters.size());
        m_begins[0] = ~0U;
        std::copy(m_split.delimiters.begin(), m_split.delimiters.end() - 1, m_begins.begin() + 1);
    }
    if (!m_started && m_hasHeader && m_records > 0) m_nextRecord = 1;
    m_started = true;
    return true;
}

TextFields TextScan::Fields(unsigned record, unsigned place) const {
    const size_t first = size_t{record} * m_columnCount + place;
    const std::vector<unsigned>& ends = m_ragged ? m_ends : m_split.delimiters;
    return {m_text, m_begins.data() + first, ends.data() + first, m_columnCount};
}

unsigned TextScan::Next(unsigned pageSize) {
    m_previousCursor.store(GetCursor(), std::memory_order_relaxed);
    if (pageSize == 0) return SetPage(0);
    if (m_cancelled.load(std::memory_order_relaxed)) throw CancelledException();
    while (m_nextRecord == m_records) {
        if (!FindRows()) {
            ReportErrors();
            return SetPage(0);
        }
    }
    const unsigned count = std::min(pageSize, m_records - m_nextRecord);
    const uint64_t row = GetCursor();
    tbb::parallel_for(
        tbb::blocked_range<size_t>(0, m_scanned.size(), 1),
        [&](const tbb::blocked_range<size_t>& range) {
            for (size_t i = range.begin(); i != range.end(); ++i) {
                TextColumnParser& parser = *m_scanned[i].parser;
                parser.Reset(count);
                parser.Parse(count, 0, row, Fields(m_nextRecord, m_scanned[i].place));
            }
        },
        m_partitioner->affinity);
    m_nextRecord += count;
    m_cursor.store(row + count, std::memory_order_relaxed);
    m_textCursor.store(m_position + m_split.length, std::memory_order_relaxed);
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
