#include "ingest/BinaryScan.h"

#include <tbb/parallel_for.h>
#include <tbb/partitioner.h>

#include <algorithm>

#include "algebra/OperatorVisitor.h"
#include "ingest/BinaryInserter.h"
#include "ingest/status.h"
#include "server/protocol/QVE_InputIterator.h"
#include "server/protocol/status.h"
#include "system/QuillonException.h"

namespace qve {

struct BinaryScan::Partitioner {
    tbb::affinity_partitioner affinity;  // a column stays with its worker
};

BinaryScan::BinaryScan(const std::vector<usrprops>& columns, Queue& queue)
    : DataFlow(nullptr, {}), m_queue(queue), m_partitioner(std::make_unique<Partitioner>()) {
    for (const usrprops& properties : columns) {
        m_inserters.push_back(MakeInserter(properties));
        m_columns[m_inserters.back()->GetColumn()->GetName()] = nullptr;
    }
}

BinaryScan::~BinaryScan() = default;

void BinaryScan::Accept(OperatorVisitor& visitor) {
    visitor.VisitBinaryScan(*this);
}

void BinaryScan::SetCancelled() {
    m_cancelled.store(true, std::memory_order_relaxed);
    m_queue.try_push(nullptr);  // wakes the reader; it waits only where there is room
}

uint64_t BinaryScan::GetErrors() const {
    uint64_t errors = 0;
    for (const auto& inserter : m_inserters) errors += inserter->GetErrors();
    return errors;
}

const BinaryScan::Inserter* BinaryScan::Find(const std::wstring& name) const {
    const auto found = std::find_if(m_inserters.begin(), m_inserters.end(),
                                    [&name](const auto& inserter) { return inserter->GetColumn()->GetName() == name; });
    return found == m_inserters.end() ? nullptr : found->get();
}

RefCntPtr<Column> BinaryScan::LoadColumn(const std::wstring& name) const {
    const Inserter* inserter = Find(name);
    return inserter ? inserter->GetColumn() : DataFlow::LoadColumn(name);
}

RefCntPtr<Column> BinaryScan::LookupColumn(const std::wstring& name) const {
    return LoadColumn(name);
}

void BinaryScan::ResetCursor() {
    if (GetCursor() > 0) DataFlow::ResetCursor();
}

void BinaryScan::CheckCount(uint64_t count, uint64_t bytes) {
    constexpr uint64_t least = sizeof(uint32_t);  // a null is its type word
    if (count <= bytes / least) return;
    throw QVE_RuntimeError(status::QVE_InputIterator_ValueOverrun,
                           "BinaryScan: the message cannot hold " + std::to_string(count) + " values");
}

void BinaryScan::NextBlock() {
    m_position = 0;
    m_values.clear();
    while (!m_ended && m_values.empty()) {
        m_queue.pop(m_block);
        if (m_cancelled.load(std::memory_order_relaxed)) return;
        if (!m_block) {
            m_ended = true;
            return;
        }
        QVE_InputIterator in(m_block->message);
        if (in.ReadCommand() != QVE_Command::InsertPutValues) continue;
        in.ReadGuid();
        const uint32_t count = in.ReadU32();
        CheckCount(count, in.GetRemaining());
        m_values.resize(count);
        in.ReadValues(count, m_values.data());
    }
}

unsigned BinaryScan::Next(unsigned pageSize) {
    m_previousCursor = GetCursor();
    const size_t columns = m_inserters.size();
    if (pageSize == 0 || columns == 0) return SetPage(0);
    for (const auto& inserter : m_inserters) inserter->Reset(pageSize);
    unsigned done = 0;
    while (done < pageSize) {
        if (m_position == m_values.size()) {
            NextBlock();
            if (m_cancelled.load(std::memory_order_relaxed)) throw CancelledException();
            if (m_ended) break;
        }
        const size_t rows = std::min<size_t>((m_values.size() - m_position) / columns, pageSize - done);
        if (m_column > 0 || rows == 0) {
            m_inserters[m_column]->Insert(1, &m_values[m_position++], columns, done);
            m_column = (m_column + 1) % columns;
            done += m_column == 0;
            continue;
        }
        const QVE_Value* const values = &m_values[m_position];
        tbb::parallel_for(
            tbb::blocked_range<size_t>(0, columns, 1),
            [&](const tbb::blocked_range<size_t>& range) {
                for (size_t i = range.begin(); i != range.end(); ++i) {
                    m_inserters[i]->Insert(static_cast<unsigned>(rows), values + i, columns, done);
                }
            },
            m_partitioner->affinity);
        m_position += rows * columns;
        done += static_cast<unsigned>(rows);
    }
    if (m_ended && m_column > 0) {
        throw QVE_RuntimeError(status::BinaryScan_Next, "BinaryScan::Next: Incomplete number of rows.");
    }
    m_cursor.store(m_previousCursor + done, std::memory_order_relaxed);
    return SetPage(done);
}

}  // namespace qve
