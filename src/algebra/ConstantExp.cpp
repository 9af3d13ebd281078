#include "algebra/ConstantExp.h"

#include <sstream>

#include "algebra/ExpVisitor.h"
#include "storage/Column.h"
#include "storage/stream/TempFileDataStream.h"
#include "system/unicode.h"
#include "types/usrtype.h"

namespace qve {

ConstantExp::ConstantExp(const usratom& atom) : ConstantExp({}, atom) {}

ConstantExp::ConstantExp(const std::wstring& name, const usratom& atom) {
    usrprops properties = AtomProperties(atom);
    if (!name.empty()) properties.set(usrpropkey::name, name);
    const bool compressed = properties.has(usrpropkey::compression);
    RefCntPtr<DataStream> dictionary;
    if (compressed) dictionary = MakeRef<TempFileDataStream>();
    m_column = MakeRef<Column>(std::move(properties), MakeRef<TempFileDataStream>(), dictionary);
    m_isConstant = true;
    AddValue(atom);
}

ConstantExp::ConstantExp(RefCntPtr<Column> value) {
    m_column = std::move(value);
    m_isConstant = true;
}

ConstantExp::~ConstantExp() = default;

void ConstantExp::Accept(ExpVisitor& visitor) {
    visitor.VisitConstantExp(*this);
}

RefCntPtr<Column> ConstantExp::AllocateColumn(const Namespace*) {
    return m_column;
}

void ConstantExp::Evaluate(unsigned, unsigned, const unsigned*, const Namespace*) {}

void ConstantExp::AddValue(const usratom& atom) {
    m_column->Append(1, atom, false);
    m_column->Seek(0, m_column->GetCount());
}

usratom ConstantExp::GetValue(unsigned index) const {
    usratom view;
    m_column->GetType()->get(m_column->GetInput(0), index, view);
    usratom value;
    if (view.data()) {
        value.assign(view.type(), view.data(), view.length());
    } else {
        value.assign_null(m_column->GetType());
    }
    return value;
}

unsigned ConstantExp::GetValueCount() const {
    return static_cast<unsigned>(m_column->GetCount());
}

bool ConstantExp::IsNull() const {
    return GetValue().isnull();
}

usrprops ConstantExp::AtomProperties(const usratom& atom) {
    usrprops properties = atom.type()->properties();
    std::ostringstream text;
    atom.type()->tostream(text, atom);
    properties.set(usrpropkey::name, L"ConstantExp " + widen(text.str()));
    properties.set(usrpropkey::storagetype, Column::storageVal);
    if (!atom.type()->fixed()) {
        properties.set(usrpropkey::compression, L"heap");
        properties.set(usrpropkey::distinct, true);
    }
    if (!atom.isnull()) properties.set(usrpropkey::not_null, true);
    return properties;
}

}  // namespace qve
