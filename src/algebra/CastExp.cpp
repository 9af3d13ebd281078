#include "algebra/CastExp.h"

#include "algebra/ConstantExp.h"
#include "algebra/ExpVisitor.h"
#include "algebra/MapExp.h"
#include "algebra/TokenTranslator.h"
#include "algebra/status.h"
#include "primitives/primitive_directory.h"
#include "storage/Column.h"
#include "storage/stream/TempFileDataStream.h"
#include "system/QuillonException.h"
#include "system/unicode.h"
#include "types/usrtype.h"

namespace qve {

namespace {

// Whether a kernel `op` converts values of the type.
bool HasKernel(const std::wstring& op, const std::wstring& type) {
    for (const primitive* candidate : primitive::resolve(op, {{type, primitive::storageCol}})) {
        if (candidate->klass() == primitive::klassMap) return true;
    }
    return false;
}

std::wstring TypeOf(const Exp& value) {
    return value.GetPrimitiveType(usrpropkey::empty);
}

// The conversion between plain types, in two steps where no kernel does it in one; null when there is none.
RefCntPtr<Exp> ConvertPlain(const std::wstring& name, const RefCntPtr<Exp>& value, const std::wstring& target) {
    const std::wstring from = TypeOf(*value);
    if (HasKernel(target, from)) return MakeRef<MapUnaryExp>(name, target, value, false);
    for (const wchar_t* between : {L"datetime", L"double"}) {
        if (HasKernel(between, from) && HasKernel(target, between)) {
            return MakeRef<MapUnaryExp>(name, target, MakeRef<MapUnaryExp>(name, between, value, false), false);
        }
    }
    return nullptr;
}

// The parser of text whose result is next to values of this type.
const wchar_t* ParserFor(DataType type) {
    switch (type) {
        case DataType::boolean:
        case DataType::index:
        case DataType::integer:
            return L"to_int";
        case DataType::real:
            return L"to_real";
        case DataType::date:
            return L"to_date";
        case DataType::datetime:
            return L"to_datetime";
        case DataType::duration:
            return L"to_duration";
        default:
            return nullptr;
    }
}

}  // namespace

CastExp::CastExp(const std::wstring& name, RefCntPtr<Exp> value, RefCntPtr<Exp> type)
    : Exp(name, {std::move(value), std::move(type)}) {}

CastExp::~CastExp() = default;

void CastExp::Accept(ExpVisitor& visitor) {
    visitor.VisitCastExp(*this);
}

std::wstring CastExp::GetPrimitiveName() const {
    return m_inner ? m_inner->GetPrimitiveName() : std::wstring();
}

input_column CastExp::GetResult() const {
    return m_translator ? m_column->GetInput(0) : m_inner->GetResult();
}

RefCntPtr<Column> CastExp::AllocateColumn(const Namespace* input) {
    if (m_inner) return m_column;
    Exp::AllocateColumn(input);
    const usrtype& target = *m_arguments[1]->GetColumn()->GetType();
    RefCntPtr<Exp> inner = MakeExplicitCast(target);
    if (!inner) inner = target.fixed() ? MakeScalarCast(target) : MakeVarcharCast();
    inner->AllocateColumn(input);
    m_inner = std::move(inner);
    MakeColumn(target);
    m_isConstant = m_inner->IsConstant();
    return m_column;
}

// What needs no kernel: a value of the type already, and a constant.
RefCntPtr<Exp> CastExp::MakeExplicitCast(const usrtype& target) const {
    const RefCntPtr<Exp>& value = m_arguments[0];
    if (value->GetColumn()->GetType() == &target) return value;
    if (const auto* constant = dynamic_cast<const ConstantExp*>(value.get())) {
        return CastConstant(*constant, target.properties());
    }
    return nullptr;
}

RefCntPtr<Exp> CastExp::MakeScalarCast(const usrtype& target) const {
    const RefCntPtr<Exp>& value = m_arguments[0];
    if (RefCntPtr<Exp> converted = ConvertPlain(GetName(), value, target.name())) return converted;
    const wchar_t* const parser = ParserFor(target.GetDataType());
    if (!parser || !HasKernel(parser, TypeOf(*value))) {
        throw QVE_InvalidArgument(
            status::CastExp_AllocateColumn,
            narrow(L"CastExp::AllocateColumn: " + value->GetColumn()->GetType()->name() + L" to " + target.name()));
    }
    return MakeRef<CastExp>(GetName(), MakeRef<MapUnaryExp>(GetName(), parser, value, false), m_arguments[1]);
}

RefCntPtr<Exp> CastExp::MakeVarcharCast() const {
    const RefCntPtr<Exp>& value = m_arguments[0];
    if (value->GetColumn()->IsCompressed()) return value;
    return MakeRef<MapUnaryExp>(GetName(), L"to_str", value, false);
}

void CastExp::MakeColumn(const usrtype& target) {
    const Column& inner = *m_inner->GetColumn();
    usrprops properties = inner.GetProperties();
    if (inner.GetType() != &target && inner.IsCompressed()) {
        properties = target.properties();
        properties.set(usrpropkey::compression, L"heap");
        properties.set(usrpropkey::distinct, true);
        if (inner.GetStorageName() == Column::storageVal) {
            properties.set(usrpropkey::storagetype, Column::storageVal);
        }
        properties.set(usrpropkey::name, GetName());
        m_column = MakeRef<Column>(std::move(properties), MakeRef<TempFileDataStream>(), MakeRef<TempFileDataStream>());
        m_translator = std::make_unique<TokenTranslator>(m_column->GetTokenSize());
        return;
    }
    properties.set(usrpropkey::name, GetName());
    properties.erase(usrpropkey::encoding);
    m_column = MakeRef<Column>(std::move(properties), nullptr, inner.GetDict());
}

void CastExp::Evaluate(unsigned count, unsigned extent, const unsigned* sel, const Namespace* input) {
    m_inner->Evaluate(count, extent, sel, input);
    const Column& inner = *m_inner->GetColumn();
    if (!m_translator) {
        m_column->ShareStreams(inner);
        m_column->SetFlags(inner.GetFlags());
        return;
    }
    if (inner.GetStorageName() == Column::storageVal) {
        count = extent = 1;
        sel = nullptr;
    }
    const output_column out = ReserveBuffer(extent);
    const input_column tokens = m_inner->GetResult();
    m_translator->Translate(count, sel, inner, tokens, *m_column, out);
    *out.flags &= static_cast<unsigned char>(~column_flags::not_null);  // text that does not fit the type becomes null
}

RefCntPtr<ConstantExp> CastConstant(const ConstantExp& constant, const usrprops& properties) {
    const usrtype* target = usrtype::resolve(properties);
    const usrtype* source = constant.GetColumn()->GetType();
    usratom converted(target);
    RefCntPtr<Exp> conversion;
    if (source != target && source->fixed() && target->fixed()) {
        conversion = ConvertPlain({}, MakeRef<ConstantExp>(constant.GetValue()), target->name());
    }
    if (conversion) {  // as a column of the value would be converted, not by way of its text
        conversion->AllocateColumn(nullptr);
        conversion->Evaluate(1, 1, nullptr, nullptr);
        target->get(conversion->GetResult(), 0, converted);
    } else {
        target->cast(converted, constant.GetValue());
    }
    if (!converted.data()) converted = target->null();
    return MakeRef<ConstantExp>(constant.GetName(), converted);
}

}  // namespace qve
