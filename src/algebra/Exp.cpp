#include "algebra/Exp.h"

#include "algebra/reserve_page.h"
#include "algebra/status.h"
#include "primitives/column_kernels.h"
#include "storage/Column.h"
#include "system/QuillonException.h"

namespace qve {

Exp::Exp() = default;

Exp::Exp(Arguments arguments) : m_arguments(std::move(arguments)) {}

Exp::Exp(const std::wstring& name, Arguments arguments)
    : m_arguments(std::move(arguments)), m_column(MakeRef<Column>(usrprops{{usrpropkey::name, name}})) {}

Exp::~Exp() = default;

std::wstring Exp::GetPrimitiveName() const {
    return {};
}

std::wstring Exp::GetPrimitiveStorage() const {
    return m_column->GetStorageName();
}

input_column Exp::GetResult() const {
    return m_column->GetInput(0);
}

RefCntPtr<Column> Exp::AllocateColumn(const Namespace* input) {
    for (const RefCntPtr<Exp>& argument : m_arguments) argument->AllocateColumn(input);
    return m_column;
}

unsigned Exp::Select(unsigned count, unsigned extent, unsigned* out, const unsigned* sel, const Namespace* input) {
    Evaluate(count, extent, sel, input);
    const output_column positions{out, nullptr, sizeof(unsigned), extent + 1, nullptr};
    const bool single = m_column->GetStorageName() == Column::storageVal;
    const unary_func copy = single ? sel_copy_bit_val() : sel_copy_bit_col();
    return copy(count, positions, GetResult(), sel);
}

void Exp::Evaluate(unsigned count, unsigned extent, const unsigned* sel, const Namespace* input) {
    EvaluateArguments(count, extent, sel, input);
}

void Exp::Aggregate(unsigned, input_column, const unsigned*) {
    throw QVE_DomainError(status::Exp_Aggregate, "Exp::Aggregate");
}

const usrprops& Exp::GetProperties() const {
    return m_column->GetProperties();
}

void Exp::FinishAggregate(uint64_t, const ProgressCallback*) {}

void Exp::SetName(const std::wstring& name) {
    m_column->SetName(name);
}

std::wstring Exp::GetName() const {
    return m_column->GetName();
}

std::wstring Exp::GetPrimitiveType(usrpropkey key) const {
    const bool byValue = m_column->IsCompressed() && key == usrpropkey::empty;
    return byValue ? L"usr" + std::to_wstring(m_column->GetTokenSize()) : m_column->GetPrimitiveType(key);
}

DataType Exp::GetDataType() const {
    return m_column->GetDataType();
}

output_column Exp::ReserveBuffer(unsigned extent) {
    return reserve_page(*m_column, extent);
}

void Exp::EvaluateArguments(unsigned count, unsigned extent, const unsigned* sel, const Namespace* input) {
    for (const RefCntPtr<Exp>& argument : m_arguments) {
        if (!argument->IsConstant()) {
            argument->Evaluate(count, extent, sel, input);
        } else if (!m_constantsEvaluated) {
            argument->Evaluate(1, 1, nullptr, input);
        }
    }
    m_constantsEvaluated = true;
}

}  // namespace qve
