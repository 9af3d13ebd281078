#include "algebra/FlowTable.h"

#include <tbb/parallel_for.h>
#include <tbb/task_group.h>

#include <cstring>
#include <map>
#include <memory>
#include <vector>

#include "algebra/ColumnWriter.h"
#include "algebra/OperatorProgressCallback.h"
#include "algebra/OperatorVisitor.h"
#include "algebra/status.h"
#include "algebra/take_error_counts.h"
#include "os/MappedFile.h"
#include "storage/Column.h"
#include "storage/EncodingFactory.h"
#include "storage/stream/TempFileDataStream.h"
#include "system/QuillonException.h"
#include "system/unicode.h"
#include "telemetry/LogEntry.h"
#include "telemetry/LogScopeTime.h"
#include "vql/syntax/VQLEvaluatorSettings.h"

namespace qve {

static_assert(FlowTable::anyEncoding == EncodingFactory::Mask::All);
static_assert(FlowTable::randomAccess == (EncodingFactory::Mask::FrameOfReference | EncodingFactory::Mask::Dictionary |
                                          EncodingFactory::Mask::Affine));

FlowTable::FlowTable(RefCntPtr<DataFlow> source, uint64_t encodings, ColumnWriter::Purpose purpose)
    : m_source(std::move(source)), m_encodings(encodings), m_purpose(purpose) {
    if (!m_source) throw QVE_InvalidArgument(status::FlowTable_source, "FlowTable::m_source");
}

FlowTable::~FlowTable() = default;

void FlowTable::Accept(OperatorVisitor& visitor) {
    visitor.VisitFlowTable(*this);
}

ColumnNames FlowTable::GetColumnNames() const {
    return m_source->GetColumnNames();
}

bool FlowTable::HasColumn(const std::wstring& name) const {
    return m_source->HasColumn(name);
}

RefCntPtr<Column> FlowTable::GetColumn(const std::wstring& name) const {
    if (!HasColumn(name)) throw QVE_OutOfRange(status::FlowTable_GetColumn, "FlowTable::GetColumn");
    RefCntPtr<Column>& column = m_columns[name];
    if (!column) column = LoadColumn(name);
    return column;
}

unsigned FlowTable::GetColumnCount() const {
    return m_source->GetColumnCount();
}

RefCntPtr<Column> FlowTable::DescribeColumn(const std::wstring& name) const {
    if (!HasColumn(name)) throw QVE_OutOfRange(status::FlowTable_DescribeColumn, "FlowTable::DescribeColumn");
    const auto found = m_columns.find(name);
    return found == m_columns.end() ? LookupColumn(name) : found->second;
}

RefCntPtr<Column> FlowTable::LoadColumn(const std::wstring& name) const {
    if (!HasColumn(name)) throw QVE_OutOfRange(status::FlowTable_LoadColumn, "FlowTable::LoadColumn");
    return ColumnWriter::MakeTarget(*m_source->GetColumn(name));
}

RefCntPtr<Column> FlowTable::LookupColumn(const std::wstring& name) const {
    if (!HasColumn(name)) throw QVE_OutOfRange(status::FlowTable_LookupColumn, "FlowTable::LookupColumn");
    return m_source->DescribeColumn(name);
}

uint64_t FlowTable::GetStart() const {
    return 0;
}

uint64_t FlowTable::GetCount() const {
    return m_count.load(std::memory_order_relaxed);
}

uint64_t FlowTable::Build(unsigned pageSize) {
    if (m_built) return GetCount();
    LogScopeTime time("FlowTable::Build", 1.0);
    const uint64_t cuts = MappedFile::GetCutCount();

    Writers writers;
    for (const std::wstring& name : GetColumnNames()) {
        writers.push_back(std::make_unique<ColumnWriter>(m_source->GetColumn(name), GetColumn(name), m_encodings,
                                                         m_purpose, m_progress));
    }
    const bool intermediate = m_purpose == ColumnWriter::Purpose::intermediate;
    WritePages(writers, intermediate ? SourcePageSize(pageSize) : pageSize);
    MappedFile::CheckCuts(cuts);
    for (const auto& [name, column] : m_columns) TakeErrorCounts(*m_source->GetColumn(name), *column);

    m_built = true;
    time.SetNumber(GetCount());
    if (VQLEvaluatorSettings::GetDefaultDescribeExecution()) DescribeExecution();
    return GetCount();
}

// Few cells are copied in less time than it takes to wake another thread. What goes to a database is also counted and
// encoded.
bool FlowTable::WritesAtOnce(unsigned rows) const {
    constexpr uint64_t fewBytes = 1u << 18;
    if (m_purpose == ColumnWriter::Purpose::storage) return false;
    uint64_t width = 0;
    for (const auto& [name, column] : m_columns) width += column->GetTokenSize();
    return rows * width <= fewBytes;
}

void FlowTable::WritePages(const Writers& writers, unsigned pageSize) {
    tbb::affinity_partitioner affinity;  // a column stays with its worker
    const auto each = [&](auto work) {
        tbb::parallel_for(
            tbb::blocked_range<size_t>(0, writers.size(), 1),
            [&](const tbb::blocked_range<size_t>& range) {
                for (size_t i = range.begin(); i != range.end(); ++i) work(*writers[i]);
            },
            affinity);
    };
    unsigned extent = m_source->Next(pageSize);
    while (extent > 0) {
        OperatorProgressCallback::Check(m_progress.get());
        const unsigned count = m_source->GetSelectionCount();
        if (count == 0) {
            extent = m_source->Next(pageSize);
            continue;
        }
        const unsigned* const selection = m_source->GetSelection();
        for (const auto& writer : writers) writer->BeginPage(count, selection);
        if (WritesAtOnce(count)) {
            for (const auto& writer : writers) {
                writer->StagePage(count, selection);
                writer->WritePage();
            }
            m_count.store(GetCount() + count, std::memory_order_relaxed);
            extent = m_source->Next(pageSize);
            continue;
        }
        each([&](ColumnWriter& writer) { writer.StagePage(count, selection); });
        // The page is written while the source makes the next one.
        tbb::task_group writing;
        writing.run([&] { each([](ColumnWriter& writer) { writer.WritePage(); }); });
        try {
            extent = m_source->Next(pageSize);
        } catch (...) {
            writing.wait();
            throw;
        }
        writing.wait();
        m_count.store(GetCount() + count, std::memory_order_relaxed);
    }
    std::map<const DataStream*, unsigned> shares;
    for (const auto& writer : writers) ++shares[writer->GetDictionary()];
    for (const auto& writer : writers) {
        if (shares[writer->GetDictionary()] > 1) writer->KeepDictionary();
    }
    each([this](ColumnWriter& writer) {
        OperatorProgressCallback::Check(m_progress.get());
        writer.Finish();
    });
}

void FlowTable::DescribeExecution() const {
    LogEntry() << "FLOWTABLE";
    for (const auto& [name, column] : m_columns) {
        std::string properties;
        for (const auto& [key, value] : OrderedUserProperties(column->GetProperties())) {
            if (!properties.empty()) properties += ",";
            properties += narrow(UsrPropKey_ToString(key)) + ":" + narrow(value);
        }
        const RefCntPtr<DataStream>& data = column->GetData();
        LogEntry() << "Column [" << name << "] has encoding "
                   << column->GetProperties().text(usrpropkey::encoding, L"none") << " () of encoded size "
                   << data->GetStorageSize() << " and original size " << data->GetSize() << ", props={" << properties
                   << "}";
    }
    LogEntry() << "Table count: " << GetCount();
}

}  // namespace qve
