#include "algebra/CartProd.h"

#include <algorithm>
#include <limits>

#include "algebra/OperatorProgressCallback.h"
#include "algebra/OperatorVisitor.h"
#include "algebra/ProgressCallbackImpl.h"
#include "algebra/status.h"
#include "storage/Column.h"
#include "system/QuillonException.h"

namespace qve {

CartProd::CartProd(RefCntPtr<DataFlow> outer, RefCntPtr<Table> inner, Join::NamePairs imports)
    : DataFlow(outer, Join::OutputNames(*outer, imports)),
      m_inner(std::move(inner)),
      m_imports(std::move(imports)),
      m_progress(MakeRef<ProgressCallbackImpl>()) {}

CartProd::~CartProd() = default;

void CartProd::Accept(OperatorVisitor& visitor) {
    visitor.VisitCartProd(*this);
}

RefCntPtr<Column> CartProd::LoadColumn(const std::wstring& name) const {
    const std::wstring* inner = Join::InnerName(m_imports, name);
    return inner ? m_shown.AddInner(m_inner->GetColumn(*inner), name) : m_shown.AddOuter(m_source->GetColumn(name));
}

RefCntPtr<Column> CartProd::LookupColumn(const std::wstring& name) const {
    const std::wstring* inner = Join::InnerName(m_imports, name);
    return MakeRef<Column>(inner ? m_shown.DescribeInner(*m_inner->DescribeColumn(*inner), name)
                                 : m_shown.DescribeOuter(*m_source->DescribeColumn(name)));
}

void CartProd::ResetCursor() {
    DataFlow::ResetCursor();
    m_outerPlace = m_outerCount = 0;
    m_innerRow = 0;
}

void CartProd::Bind(unsigned pageSize) {
    for (const auto& entry : m_columns) GetColumn(entry.first);
    m_innerCount = m_inner->Build(std::max(pageSize, Join::buildRows));
    if (m_innerCount > std::numeric_limits<unsigned>::max()) {
        throw QVE_RangeError(status::CartProd_Rows, "CartProd: too many rows: " + std::to_string(m_innerCount));
    }
    m_shown.BindInner(m_inner->GetStart(), m_innerCount, m_progress.get(), false);
    m_bound = true;
}

bool CartProd::NextOuter(unsigned pageSize) {
    do {
        if (m_source->Next(pageSize) == 0) return false;
        m_outerCount = m_source->GetSelectionCount();
    } while (m_outerCount == 0);
    m_outerPlace = 0;
    m_innerRow = 0;
    return true;
}

unsigned CartProd::Next(unsigned pageSize) {
    SetPage(0);
    if (pageSize == 0) return 0;
    OperatorProgressCallback::Check(m_progress.get());
    if (!m_bound) Bind(pageSize);
    if (m_innerCount == 0) return 0;
    return m_innerCount == 1 ? NextSingle(pageSize) : NextPairs(pageSize);
}

unsigned CartProd::NextPairs(unsigned pageSize) {
    if (m_outerPlace == m_outerCount && !NextOuter(pageSize)) return 0;
    const unsigned* selection = m_source->GetSelection();
    m_outerRows.clear();
    m_innerRows.clear();
    while (m_outerRows.size() < pageSize && m_outerPlace < m_outerCount) {
        const auto rows = std::min<uint64_t>(pageSize - m_outerRows.size(), m_innerCount - m_innerRow);
        m_outerRows.insert(m_outerRows.end(), rows, selection ? selection[m_outerPlace] : m_outerPlace);
        for (uint64_t i = 0; i < rows; ++i) m_innerRows.push_back(static_cast<unsigned>(m_innerRow + i));
        m_innerRow += rows;
        if (m_innerRow < m_innerCount) break;
        m_innerRow = 0;
        ++m_outerPlace;
    }
    const auto count = static_cast<unsigned>(m_outerRows.size());
    m_shown.PickOuter(count, m_outerRows.data());
    m_shown.PickInner(count, count, m_innerRows.data(), nullptr);
    return SetPage(count);
}

unsigned CartProd::NextSingle(unsigned pageSize) {
    if (DataFlow::Next(pageSize) == 0) return 0;
    if (m_innerRows.size() < m_extent) m_innerRows.resize(m_extent, 0);
    m_shown.PassOuter();
    if (m_selectionCount > 0) m_shown.PickInner(m_selectionCount, m_extent, m_innerRows.data(), m_selection);
    return m_extent;
}

}  // namespace qve
