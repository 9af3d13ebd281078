#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "algebra/DataFlow.h"

namespace qve {

class Appender;

/// The rows of several flows, one flow after the other. A page is a page of the input that is being read, with its
/// selection; its cells are brought to the types and dictionaries of the output.
///
/// Columns of the inputs are paired by name, but for those that a rename names. The output has the columns of the outer
/// input that every other input supplies, each of the type that all its inputs widen to: numbers the wider number,
/// dates and datetimes datetime, texts the longest text, and everything else text. Spatial values only go with their
/// like.
class Append : public DataFlow {
public:
    /// From a column of an input to the column of the outer input that it continues.
    using Renames = boost::container::flat_map<std::wstring, std::wstring>;

    /// `renames` has one entry for each of `inners`. Throws QVE_InvalidArgument (status::Append_types) when the types
    /// of a column have nothing in common, 40102 when a rename names no column.
    Append(RefCntPtr<DataFlow> outer, std::vector<RefCntPtr<DataFlow>> inners, std::vector<Renames> renames);
    ~Append() override;

    void Accept(OperatorVisitor& visitor) override;
    uint64_t GetCursor() const override;
    void ResetCursor() override;
    uint64_t GetPreviousCursor() const override;
    unsigned Next(unsigned pageSize) override;
    RefCntPtr<Column> LoadColumn(const std::wstring& name) const override;
    RefCntPtr<Column> LookupColumn(const std::wstring& name) const override;

    const std::vector<RefCntPtr<DataFlow>>& GetInners() const { return m_inners; }
    const std::vector<Renames>& GetRenames() const { return m_renames; }

    /// Whether the dictionaries of the inputs are merged, each value carried over once. Without, texts are stored row
    /// by row. The setting "UseHeapMerger"; on by default.
    static bool GetUseHeapMerger() { return s_useHeapMerger.load(std::memory_order_relaxed); }
    static void SetUseHeapMerger(bool use) { s_useHeapMerger.store(use, std::memory_order_relaxed); }

private:
    const RefCntPtr<DataFlow>& Input(size_t index) const { return index == 0 ? m_source : m_inners[index - 1]; }
    size_t InputCount() const { return m_inners.size() + 1; }
    Appender& GetAppender(const std::wstring& name) const;

    static std::atomic<bool> s_useHeapMerger;

    const std::vector<RefCntPtr<DataFlow>> m_inners;
    const std::vector<Renames> m_renames;
    mutable boost::container::flat_map<std::wstring, std::unique_ptr<Appender>> m_appenders;  // by output column
    std::vector<Appender*> m_loaded;                                                          // of the running flow
    std::atomic<size_t> m_current{0};  // the input that is read; progress is asked for by other threads
    std::atomic<uint64_t> m_cursor{0};
    uint64_t m_previousCursor = 0;
    uint64_t m_inputBegin = 0;  // row of the output at which the current input begins
    bool m_started = false;
};

}  // namespace qve
