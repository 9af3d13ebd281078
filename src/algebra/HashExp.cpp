#include "algebra/HashExp.h"

#include "algebra/ExpVisitor.h"
#include "storage/Column.h"

namespace qve {

HashExp::HashExp(const std::wstring& name, const std::wstring& op, RefCntPtr<Exp> argument, bool tokens,
                 RefCntPtr<HashExp> previous)
    : MapUnaryExp(name, op, std::move(argument), tokens), m_previous(std::move(previous)) {}

void HashExp::Accept(ExpVisitor& visitor) {
    visitor.VisitHashExp(*this);
}

RefCntPtr<Column> HashExp::AllocateColumn(const Namespace* input) {
    if (m_previous) m_previous->AllocateColumn(input);
    return MapUnaryExp::AllocateColumn(input);
}

void HashExp::Evaluate(unsigned count, unsigned extent, const unsigned* sel, const Namespace* input) {
    if (m_previous) {
        m_previous->Evaluate(count, extent, sel, input);
        const RefCntPtr<DataStream>& hashes = m_previous->GetColumn()->GetData();
        if (m_column->GetData() != hashes) m_column->SetData(hashes);
    }
    MapUnaryExp::Evaluate(count, extent, sel, input);
}

}  // namespace qve
