#include "algebra/PartitionExp.h"

#include "algebra/ExpVisitor.h"
#include "algebra/status.h"
#include "primitives/primitive.h"
#include "storage/Column.h"
#include "storage/stream/TempFileDataStream.h"
#include "system/QuillonException.h"

namespace qve {

PartitionExp::PartitionExp(const std::wstring& name, Arguments keys) : Exp(name, std::move(keys)) {}

void PartitionExp::Accept(ExpVisitor& visitor) {
    visitor.VisitPartitionExp(*this);
}

RefCntPtr<Column> PartitionExp::AllocateColumn(const Namespace* input) {
    if (m_bound) return m_column;
    Exp::AllocateColumn(input);
    MakeColumn();
    m_bound = true;
    return m_column;
}

void PartitionExp::MakeColumn() {
    for (const RefCntPtr<Exp>& key : m_arguments) {
        if (key->GetPrimitiveStorage() == Column::storageVal) continue;
        if (!m_changes.AddKey(*key->GetColumn())) {
            throw QVE_InvalidArgument(status::PartitionExp_MakeColumn, "PartitionExp::MakeColumn");
        }
        m_keys.push_back(key.get());
    }
    usrprops properties = primitive::primitive_props(L"ulng");
    properties.set(usrpropkey::name, GetName());
    m_column = MakeRef<Column>(std::move(properties), MakeRef<TempFileDataStream>());
}

void PartitionExp::Evaluate(unsigned count, unsigned extent, const unsigned* sel, const Namespace* input) {
    EvaluateArguments(count, extent, sel, input);
    const output_column out = ReserveBuffer(extent);
    *out.flags |= column_flags::not_null;
    if (count == 0) return;
    m_pages.clear();
    for (const Exp* key : m_keys) m_pages.push_back(key->GetResult());
    const unsigned char* starts = m_changes.Mark(count, extent, sel, m_pages);
    auto* partitions = out.values<unsigned>();
    for (unsigned k = 0; k < count; ++k) {
        const unsigned row = sel ? sel[k] : k;
        if (starts[row] && ++m_partition == ~0u) {
            throw QVE_RangeError(status::PartitionExp_Evaluate, "PartitionExp::Evaluate: Too many partitions");
        }
        partitions[row] = m_partition;
    }
}

}  // namespace qve
