#include "algebra/ExpandExp.h"

#include <cstring>

#include "algebra/ExpVisitor.h"
#include "algebra/status.h"
#include "primitives/tokens.h"
#include "storage/Column.h"
#include "storage/stream/TempFileDataStream.h"
#include "system/QuillonException.h"
#include "types/heap_reader.h"
#include "types/usrtype.h"

namespace qve {
namespace {

// Raises unless each token is an entry of the dictionary or the null.
void CheckTokens(unsigned count, const unsigned* sel, const token_view& tokens, const usrheap& heap) {
    const unsigned long long end = heap.next();
    bool inside = true;
    for (unsigned k = 0; k < count; ++k) {
        const unsigned long long token = tokens[sel ? sel[k] : k];
        inside &= token < end || token == usrheap::null_token;
    }
    if (!inside) throw QVE_OutOfRange(status::ExpandExp_Evaluate, "ExpandExp::Evaluate token out of range.");
}

}  // namespace

ExpandExp::ExpandExp(const std::wstring& name, RefCntPtr<Exp> argument) : Exp(name, Arguments{std::move(argument)}) {}

void ExpandExp::Accept(ExpVisitor& visitor) {
    visitor.VisitExpandExp(*this);
}

RefCntPtr<Column> ExpandExp::AllocateColumn(const Namespace* input) {
    if (m_bound) return m_column;
    Exp::AllocateColumn(input);
    MakeColumn();
    m_bound = true;
    return m_column;
}

void ExpandExp::MakeColumn() {
    const Exp& argument = *m_arguments[0];
    const RefCntPtr<Column>& tokens = argument.GetColumn();
    if (!tokens->IsCompressed() || !tokens->GetDict()) {
        throw QVE_InvalidArgument(status::ExpandExp_MakeColumn, "ExpandExp::MakeColumn: Not compressed");
    }
    m_copies = tokens->GetType()->fixed();
    m_single = argument.GetPrimitiveStorage() == Column::storageVal;
    m_isConstant = argument.IsConstant();
    usrprops properties = m_copies ? tokens->GetType()->properties() : tokens->GetProperties();
    properties.set(usrpropkey::name, GetName().empty() ? argument.GetName() : GetName());
    if (m_single) properties.set(usrpropkey::storagetype, Column::storageVal);
    if (m_copies) {
        m_column = MakeRef<Column>(std::move(properties), MakeRef<TempFileDataStream>());
    } else {
        m_column = MakeRef<Column>(std::move(properties), nullptr, tokens->GetDict());
    }
}

template <class Value>
void ExpandExp::Copy(unsigned count, const unsigned* sel, const output_column& out) {
    const Exp& argument = *m_arguments[0];
    const heap_reader dictionary(argument.GetColumn()->GetHeap());
    const token_view tokens(argument.GetResult(), m_single);
    Value null;
    std::memcpy(&null, m_column->GetType()->null_bytes().data(), sizeof(Value));
    for (unsigned k = 0; k < count; ++k) {
        const unsigned row = sel ? sel[k] : k;
        const unsigned long long token = tokens[row];
        Value value = null;
        if (token != usrheap::null_token) std::memcpy(&value, dictionary[token].data(), sizeof(Value));
        out.values<Value>()[row] = value;
    }
}

void ExpandExp::Evaluate(unsigned count, unsigned extent, const unsigned* sel, const Namespace* input) {
    EvaluateArguments(count, extent, sel, input);
    if (m_single) {
        count = extent = 1;
        sel = nullptr;
    }
    const Column& tokens = *m_arguments[0]->GetColumn();
    CheckTokens(count, sel, token_view(m_arguments[0]->GetResult(), m_single), *tokens.GetHeap());
    if (!m_copies) {
        if (m_column->GetTokenSize() != tokens.GetTokenSize()) {
            m_column->SetProperty(usrpropkey::storagewidth, std::to_wstring(tokens.GetTokenSize()));
        }
        m_column->ShareStreams(tokens);
        m_column->SetFlags(tokens.GetFlags());
        return;
    }
    const output_column out = ReserveBuffer(extent);
    *out.flags &= static_cast<unsigned char>(~column_flags::not_null);
    *out.flags |= m_arguments[0]->GetResult().flags & column_flags::not_null;
    switch (out.width) {
        case 1:
            return Copy<uint8_t>(count, sel, out);
        case 2:
            return Copy<uint16_t>(count, sel, out);
        case 4:
            return Copy<uint32_t>(count, sel, out);
        default:
            return Copy<uint64_t>(count, sel, out);
    }
}

input_column ExpandExp::GetResult() const {
    return m_copies ? Exp::GetResult() : m_arguments[0]->GetResult();
}

}  // namespace qve
