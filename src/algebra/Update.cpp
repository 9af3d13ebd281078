#include "algebra/Update.h"

#include "algebra/CastExp.h"
#include "algebra/ColumnExp.h"
#include "algebra/ConstantExp.h"
#include "algebra/OperatorVisitor.h"
#include "algebra/status.h"
#include "storage/Column.h"
#include "system/QuillonException.h"
#include "system/unicode.h"

namespace qve {

Update::Update(RefCntPtr<DataFlow> source, Pairs pairs)
    : DataFlow(source, source ? source->GetColumnNames() : ColumnNames()), m_pairs(std::move(pairs)) {
    if (!m_source) throw QVE_InvalidArgument(status::Update_source, "Update::m_source");
    for (const auto& [target, from] : m_pairs) {
        if (!m_source->HasColumn(target) || !m_source->HasColumn(from) || FindExpression(target)) {
            throw QVE_OutOfRange(status::Update_pairs, "Update: " + narrow(target) + " from " + narrow(from));
        }
        const usratom null(m_source->DescribeColumn(target)->GetType());
        m_expressions.push_back(
            MakeRef<CastExp>(target, MakeRef<ColumnExp>(m_source->DescribeColumn(from)), MakeRef<ConstantExp>(null)));
    }
}

Update::~Update() = default;

void Update::Accept(OperatorVisitor& visitor) {
    visitor.VisitUpdate(*this);
}

Exp* Update::FindExpression(const std::wstring& name) const {
    for (size_t i = 0; i < m_expressions.size(); ++i) {
        if (m_pairs[i].first == name) return m_expressions[i].get();
    }
    return nullptr;
}

RefCntPtr<Column> Update::LoadColumn(const std::wstring& name) const {
    Exp* expression = FindExpression(name);
    return expression ? expression->AllocateColumn(m_source.get()) : DataFlow::LoadColumn(name);
}

RefCntPtr<Column> Update::LookupColumn(const std::wstring& name) const {
    Exp* expression = FindExpression(name);
    return expression ? expression->AllocateColumn(m_source.get()) : DataFlow::LookupColumn(name);
}

unsigned Update::Next(unsigned pageSize) {
    if (!m_bound) {
        for (const auto& pair : m_pairs) GetColumn(pair.first);
        m_bound = true;
    }
    if (DataFlow::Next(pageSize) == 0) return 0;
    for (const RefCntPtr<Exp>& expression : m_expressions) {
        expression->Evaluate(m_selectionCount, m_extent, m_selection, m_source.get());
    }
    return m_extent;
}

}  // namespace qve
