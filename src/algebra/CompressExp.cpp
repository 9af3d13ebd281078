#include "algebra/CompressExp.h"

#include "algebra/ExpVisitor.h"
#include "algebra/status.h"
#include "storage/Column.h"
#include "storage/stream/TempFileDataStream.h"
#include "system/QuillonException.h"
#include "types/usrtype.h"

namespace qve {

CompressExp::CompressExp(const std::wstring& name, RefCntPtr<Exp> argument)
    : Exp(name, Arguments{std::move(argument)}) {}

void CompressExp::Accept(ExpVisitor& visitor) {
    visitor.VisitCompressExp(*this);
}

RefCntPtr<Column> CompressExp::AllocateColumn(const Namespace* input) {
    if (m_bound) return m_column;
    Exp::AllocateColumn(input);
    MakeColumn();
    m_bound = true;
    return m_column;
}

void CompressExp::MakeColumn() {
    const Exp& argument = *m_arguments[0];
    // A select node has no results that could be stored.
    if (!argument.GetProperties().has(usrpropkey::datatype)) {
        throw QVE_InvalidArgument(status::CompressExp_MakeColumn, "CompressExp::MakeColumn");
    }
    const usrtype& type = *argument.GetColumn()->GetType();
    m_single = argument.GetPrimitiveStorage() == Column::storageVal;
    m_isConstant = argument.IsConstant();
    usrprops properties = type.properties();
    properties.set(usrpropkey::name, GetName().empty() ? argument.GetName() : GetName());
    properties.set(usrpropkey::compression, type.fixed() ? L"array" : L"heap");
    if (type.fixed()) properties.set(usrpropkey::storagewidth, L"4");  // tokens are ordinals, whatever a value takes
    properties.set(usrpropkey::distinct, true);
    if (m_single) properties.set(usrpropkey::storagetype, Column::storageVal);
    m_column = MakeRef<Column>(std::move(properties), MakeRef<TempFileDataStream>(), MakeRef<TempFileDataStream>());
}

void CompressExp::Evaluate(unsigned count, unsigned extent, const unsigned* sel, const Namespace* input) {
    EvaluateArguments(count, extent, sel, input);
    if (m_single) {
        count = extent = 1;
        sel = nullptr;
    }
    const output_column out = ReserveBuffer(extent);
    const input_column values = m_arguments[0]->GetResult();
    *out.flags &= static_cast<unsigned char>(~column_flags::not_null);
    *out.flags |= values.flags & column_flags::not_null;
    m_column->GetHeap()->put(count, out, values, sel);
}

}  // namespace qve
