#include "algebra/Append.h"

#include "algebra/Appender.h"
#include "algebra/OperatorVisitor.h"
#include "storage/Column.h"

namespace qve {

std::atomic<bool> Append::s_useHeapMerger{true};

namespace {

// The column of an input that continues the column `name` of the outer one; empty when there is none.
std::wstring SourceOf(const std::wstring& name, const DataFlow& inner, const Append::Renames& renames) {
    for (const auto& [from, to] : renames) {
        if (to == name) return from;
    }
    // A column that goes by another name in the output is not there under its own.
    return renames.contains(name) || !inner.HasColumn(name) ? std::wstring() : name;
}

ColumnNames SuppliedNames(const DataFlow& outer, const std::vector<RefCntPtr<DataFlow>>& inners,
                          const std::vector<Append::Renames>& renames) {
    ColumnNames names;
    for (const std::wstring& name : outer.GetColumnNames()) {
        bool supplied = true;
        for (size_t i = 0; i < inners.size(); ++i) supplied &= !SourceOf(name, *inners[i], renames[i]).empty();
        if (supplied) names.insert(names.end(), name);
    }
    return names;
}

}  // namespace

Append::Append(RefCntPtr<DataFlow> outer, std::vector<RefCntPtr<DataFlow>> inners, std::vector<Renames> renames)
    : DataFlow(outer, SuppliedNames(*outer, inners, renames)),
      m_inners(std::move(inners)),
      m_renames(std::move(renames)) {
    for (const auto& entry : m_columns) {
        std::vector<Appender::Input> inputs{{m_source.get(), entry.first}};
        for (size_t i = 0; i < m_inners.size(); ++i) {
            inputs.push_back({m_inners[i].get(), SourceOf(entry.first, *m_inners[i], m_renames[i])});
        }
        m_appenders.emplace(entry.first, std::make_unique<Appender>(entry.first, std::move(inputs)));
    }
}

Append::~Append() = default;

void Append::Accept(OperatorVisitor& visitor) {
    visitor.VisitAppend(*this);
}

Appender& Append::GetAppender(const std::wstring& name) const {
    return *m_appenders.at(name);
}

RefCntPtr<Column> Append::LoadColumn(const std::wstring& name) const {
    return GetAppender(name).Load();
}

RefCntPtr<Column> Append::LookupColumn(const std::wstring& name) const {
    return GetAppender(name).Describe();
}

uint64_t Append::GetCursor() const {
    return m_cursor.load(std::memory_order_relaxed);
}

uint64_t Append::GetPreviousCursor() const {
    return m_previousCursor;
}

void Append::ResetCursor() {
    for (size_t i = 0; i < InputCount(); ++i) Input(i)->ResetCursor();
    m_current.store(0, std::memory_order_relaxed);
    m_cursor.store(0, std::memory_order_relaxed);
    m_previousCursor = 0;
    m_inputBegin = 0;
    for (Appender* appender : m_loaded) appender->ForgetErrors();
}

unsigned Append::Next(unsigned pageSize) {
    if (!m_started) {
        for (const auto& entry : m_columns) {
            GetColumn(entry.first);
            m_loaded.push_back(&GetAppender(entry.first));
        }
        m_started = true;
    }
    m_previousCursor = GetCursor();
    SetPage(0);
    if (pageSize == 0) return 0;
    for (size_t current = m_current; current < InputCount(); m_current = ++current) {
        DataFlow& input = *Input(current);
        m_extent = input.Next(pageSize);
        if (m_extent == 0) {
            for (Appender* appender : m_loaded) appender->TakeErrors(current, m_inputBegin);
            m_inputBegin = m_previousCursor;
            continue;
        }
        m_selection = input.GetSelection();
        m_selectionCount = input.GetSelectionCount();
        for (Appender* appender : m_loaded) {
            appender->Evaluate(current, m_selectionCount, m_extent, m_selection);
        }
        m_cursor.store(m_previousCursor + m_extent, std::memory_order_relaxed);
        return m_extent;
    }
    return SetPage(0);
}

}  // namespace qve
