#include "algebra/CaseExp.h"

#include <algorithm>
#include <cstring>

#include "algebra/CastExp.h"
#include "algebra/ColumnExp.h"
#include "algebra/ConstantExp.h"
#include "algebra/ExpVisitor.h"
#include "algebra/PrimitiveExp.h"
#include "algebra/TokenTranslator.h"
#include "algebra/status.h"
#include "primitives/blend.h"
#include "primitives/column_kernels.h"
#include "storage/Column.h"
#include "storage/stream/TempFileDataStream.h"
#include "system/QuillonException.h"
#include "types/usrtype.h"

namespace qve {

namespace {

// With more branches than this, most rows need too little of what is computed for all of them.
constexpr size_t mostBlended = 8;

bool IsNullLiteral(const Exp& exp) {
    const auto* constant = dynamic_cast<const ConstantExp*>(&exp);
    return constant && constant->IsNull();
}

// Whether the texts of a value are all known when the node is bound: those of a literal.
bool HasFinalHeap(const Exp& value) {
    return dynamic_cast<const ConstantExp*>(&value);
}

// Whether computing the node for a row that does not need it costs less than to leave the row out. What is computed
// for too many rows must depend on nothing but their values, and must not read texts.
bool IsCheap(const Exp& exp) {
    if (exp.IsConstant() || dynamic_cast<const ColumnExp*>(&exp)) return true;
    const auto* call = dynamic_cast<const PrimitiveExp*>(&exp);
    return call && call->GetClass() == primitive::klassMap && call->IsCheap() && !call->ReadsDictionary() &&
           std::all_of(call->GetArguments().begin(), call->GetArguments().end(),
                       [](const RefCntPtr<Exp>& argument) { return IsCheap(*argument); });
}

}  // namespace

CaseExp::CaseExp(const std::wstring& name, RefCntPtr<Exp> when, RefCntPtr<Exp> then, RefCntPtr<Exp> otherwise)
    : CaseExp(name, Arguments{std::move(when), std::move(then), std::move(otherwise)}) {}

CaseExp::CaseExp(const std::wstring& name, Arguments arguments) : Exp(name, std::move(arguments)) {}

CaseExp::~CaseExp() = default;

void CaseExp::Accept(ExpVisitor& visitor) {
    visitor.VisitCaseExp(*this);
}

std::wstring CaseExp::GetPrimitiveName() const {
    return opCase;
}

RefCntPtr<Column> CaseExp::AllocateColumn(const Namespace* input) {
    if (m_bound) return m_column;
    Exp::AllocateColumn(input);
    MakeColumn(input);
    m_bound = true;
    return m_column;
}

// The values in the common type of those that are not a literal null, for which each type has a null of its own.
void CaseExp::MakeBranches(const Namespace* input) {
    const size_t conditions = m_arguments.size() / 2;
    std::vector<RefCntPtr<Exp>> values;
    for (size_t i = 0; i < conditions; ++i) values.push_back(m_arguments[2 * i + 1]);
    values.push_back(m_arguments.size() % 2 ? m_arguments.back() : nullptr);

    RefCntPtr<Exp> typed;
    const usrtype* common = nullptr;
    for (const RefCntPtr<Exp>& value : values) {
        if (!value || (IsNullLiteral(*value) && m_arguments.size() > 1)) continue;
        const usrprops& properties = value->GetProperties();
        common = common ? CommonType(common->properties(), properties) : usrtype::resolve(properties);
    }
    if (!common)
        common = values.front() ? values.front()->GetColumn()->GetType() : values.back()->GetColumn()->GetType();
    typed = MakeRef<ConstantExp>(common->null());
    for (RefCntPtr<Exp>& value : values) {
        if (value && IsNullLiteral(*value)) value.reset();
        const auto* constant = dynamic_cast<const ConstantExp*>(value.get());
        if (constant && constant->GetColumn()->GetType() != common) {
            value = CastConstant(*constant, common->properties());
        } else if (value && value->GetColumn()->GetType() != common) {
            value = MakeRef<CastExp>(value->GetName(), value, typed);
            value->AllocateColumn(input);
        }
        m_branches.emplace_back();
        m_branches.back().value = value;
    }
    usrprops properties = common->properties();
    properties.set(usrpropkey::name, GetName());
    m_column = MakeRef<Column>(std::move(properties));
}

RefCntPtr<Column> CaseExp::FindSharedDictionary() const {
    RefCntPtr<Column> shared;
    for (const Branch& branch : m_branches) {
        if (!branch.value) continue;
        const RefCntPtr<Column>& column = branch.value->GetColumn();
        if (!column->GetDict()) return nullptr;  // a table that is not built yet
        if (shared && (column->GetDict() != shared->GetDict() || column->GetTokenSize() != shared->GetTokenSize())) {
            return nullptr;
        }
        shared = column;
    }
    return shared;
}

// Puts the texts of the literals into the dictionary, and makes of each a cell of this column.
void CaseExp::AppendHeap(usrprops properties, const RefCntPtr<DataStream>& dictionary) {
    properties.set(usrpropkey::storagetype, Column::storageVal);
    for (Branch& branch : m_branches) {
        if (!branch.value || !HasFinalHeap(*branch.value)) continue;
        const auto cell = MakeRef<Column>(properties, MakeRef<TempFileDataStream>(), dictionary);
        cell->Append(1, dynamic_cast<const ConstantExp&>(*branch.value).GetValue(), false);
        cell->Seek(0, 1);
        branch.value = MakeRef<ConstantExp>(cell);
    }
}

// The width of the tokens of the dictionary, once everything that can come into it is there.
unsigned CaseExp::MeasureTokens(const usrprops& properties, const RefCntPtr<DataStream>& dictionary) const {
    const bool whole = std::all_of(m_branches.begin(), m_branches.end(),
                                   [](const Branch& branch) { return !branch.value || HasFinalHeap(*branch.value); });
    const Column column(properties, MakeRef<TempFileDataStream>(), dictionary);
    return whole ? column.GetMinimalTokenSize() : column.GetTokenSize();
}

void CaseExp::MakeColumn(const Namespace* input) {
    m_single = true;
    m_isConstant = true;
    for (size_t i = 0; i + 1 < m_arguments.size(); i += 2) {
        if (m_arguments[i]->GetPrimitiveType(usrpropkey::empty) != L"bit") {
            throw QVE_InvalidArgument(status::CaseExp_MakeColumn, "CaseExp::MakeColumn: Non-Boolean condition");
        }
    }
    for (const RefCntPtr<Exp>& argument : m_arguments) {
        m_single = m_single && argument->GetPrimitiveStorage() == Column::storageVal;
        m_isConstant = m_isConstant && argument->IsConstant();
    }
    MakeBranches(input);
    m_evaluated.assign(m_branches.size(), 0);

    usrprops properties = m_column->GetProperties();
    if (m_single) properties.set(usrpropkey::storagetype, Column::storageVal);
    RefCntPtr<DataStream> dictionary;
    if (!m_column->GetType()->fixed()) {
        properties.set(usrpropkey::compression, L"heap");
        if (const RefCntPtr<Column> shared = FindSharedDictionary()) {
            for (const usrpropkey key : {usrpropkey::storagewidth, usrpropkey::distinct, usrpropkey::comparable,
                                         usrpropkey::compression, usrpropkey::dictionary_column_name}) {
                if (const std::wstring* value = shared->GetProperties().get(key)) properties.set(key, *value);
            }
            dictionary = shared->GetDict();
        } else {
            properties.set(usrpropkey::distinct, true);
            dictionary = MakeRef<TempFileDataStream>();
            AppendHeap(properties, dictionary);
            properties.set(usrpropkey::storagewidth, MeasureTokens(properties, dictionary));
            AppendHeap(properties, dictionary);
        }
    }
    m_column = MakeRef<Column>(std::move(properties), MakeRef<TempFileDataStream>(), dictionary);
    for (Branch& branch : m_branches) {
        if (branch.value && dictionary && branch.value->GetColumn()->GetDict() != dictionary) {
            branch.translator = std::make_unique<TokenTranslator>(m_column->GetTokenSize());
        }
    }
    m_blends = CanBlend();
}

bool CaseExp::CanBlend() const {
    if (m_single || m_branches.size() > mostBlended) return false;
    for (size_t i = 0; i < m_branches.size(); ++i) {
        if (i + 1 < m_branches.size() && !IsCheap(*m_arguments[2 * i])) return false;
        const Branch& branch = m_branches[i];
        if (branch.value && (branch.translator || !IsCheap(*branch.value))) return false;
    }
    return true;
}

input_column CaseExp::EvaluateCondition(size_t condition, unsigned count, unsigned extent, const unsigned* sel,
                                        const Namespace* input) {
    Exp& exp = *m_arguments[2 * condition];
    if (!exp.IsConstant()) {
        exp.Evaluate(count, extent, sel, input);
    } else if (!m_evaluated[condition]) {
        exp.Evaluate(1, 1, nullptr, input);
        m_evaluated[condition] = 1;
    }
    return exp.GetResult();
}

void CaseExp::Evaluate(unsigned count, unsigned extent, const unsigned* sel, const Namespace* input) {
    if (m_single) {
        count = extent = 1;
        sel = nullptr;
    }
    if (m_blends && !sel ? EvaluateByBlending(extent, input) : EvaluatePage(count, extent, sel, input)) return;
    UseOwnDictionary();
    EvaluatePage(count, extent, sel, input);
}

// The values no longer share a dictionary, as they did when the node was bound.
void CaseExp::UseOwnDictionary() {
    m_blends = false;
    m_column->ClearProperty(usrpropkey::storagewidth);
    m_column->SetDict(MakeRef<TempFileDataStream>());
    m_column->SetData(MakeRef<TempFileDataStream>());
    for (Branch& branch : m_branches) {
        if (branch.value) branch.translator = std::make_unique<TokenTranslator>(m_column->GetTokenSize());
    }
}

bool CaseExp::EvaluatePage(unsigned count, unsigned extent, const unsigned* sel, const Namespace* input) {
    const output_column out = ReserveBuffer(extent);
    *out.flags &= static_cast<unsigned char>(~column_flags::not_null);
    m_hits.resize(std::max<size_t>(m_hits.size(), extent + size_t{1}));
    m_rest.resize(m_hits.size());

    for (size_t i = 0; i + 1 < m_branches.size() && count > 0; ++i) {
        const input_column condition = EvaluateCondition(i, count, extent, sel, input);
        const auto* bits = condition.values<unsigned char>();
        const unsigned step = m_arguments[2 * i]->GetPrimitiveStorage() == Column::storageVal ? 0 : 1;
        unsigned hits = 0;
        unsigned rest = 0;
        for (unsigned k = 0; k < count; ++k) {
            const unsigned row = sel ? sel[k] : k;
            const unsigned hit = bits[row * step] & 1;
            m_hits[hits] = row;
            m_rest[rest] = row;
            hits += hit;
            rest += hit ^ 1;
        }
        if (hits == count) {
            // Not `sel` itself: where that is the rest of the branch before, it has just been written to.
            return CopyBranch(m_branches[i], out, count, extent, sel ? m_hits.data() : nullptr, input);
        }
        if (!CopyBranch(m_branches[i], out, hits, extent, m_hits.data(), input)) return false;
        if (hits > 0) sel = m_rest.data();
        count = rest;
    }
    return CopyBranch(m_branches.back(), out, count, extent, sel, input);
}

bool CaseExp::EvaluateByBlending(unsigned extent, const Namespace* input) {
    const output_column out = ReserveBuffer(extent);
    *out.flags &= static_cast<unsigned char>(~column_flags::not_null);
    // The conditions up to the first that is true for all rows, which then has the part of the last argument.
    size_t last = 0;
    for (; last + 1 < m_branches.size(); ++last) {
        const input_column condition = EvaluateCondition(last, extent, extent, nullptr, input);
        const bool single = m_arguments[2 * last]->GetPrimitiveStorage() == Column::storageVal;
        if (single && (condition.values<bit>()->value & 1)) break;
    }
    if (!CopyBranch(m_branches[last], out, extent, extent, nullptr, input)) return false;
    bool whole = IsWhole(m_branches[last]);
    for (size_t i = last; i-- > 0;) {
        const Exp& condition = *m_arguments[2 * i];
        if (condition.GetPrimitiveStorage() == Column::storageVal) continue;  // of those that are not true
        Branch& branch = m_branches[i];
        const bit* const hits = condition.GetResult().values<bit>();
        if (!branch.value) {
            char null[sizeof(uint64_t)];
            blend_cells(extent, static_cast<unsigned>(out.width), out.data, hits, GetNull(null), true);
            whole = false;
            continue;
        }
        EvaluateBranch(branch, extent, extent, nullptr, input);
        if (!SharesDictionary(*branch.value->GetColumn())) return false;
        const bool single = branch.value->GetPrimitiveStorage() == Column::storageVal;
        blend_cells(extent, static_cast<unsigned>(out.width), out.data, hits, branch.value->GetResult().data, single);
        whole = whole && IsWhole(branch);
    }
    if (whole) *out.flags |= column_flags::not_null;
    return true;
}

void CaseExp::EvaluateBranch(Branch& branch, unsigned count, unsigned extent, const unsigned* sel,
                             const Namespace* input) {
    if (!branch.value->IsConstant()) {
        branch.value->Evaluate(count, extent, sel, input);
    } else if (!branch.evaluated) {
        branch.value->Evaluate(1, 1, nullptr, input);
        branch.evaluated = true;
    }
}

// Whether the value's results on this page are known not to be null.
bool CaseExp::IsWhole(const Branch& branch) {
    if (!branch.value) return false;
    if (const auto* constant = dynamic_cast<const ConstantExp*>(branch.value.get())) return !constant->IsNull();
    return branch.value->GetResult().flags & column_flags::not_null;
}

bool CaseExp::SharesDictionary(const Column& column) const {
    return !m_column->IsCompressed() ||
           (column.GetDict() == m_column->GetDict() && column.GetTokenSize() == m_column->GetTokenSize());
}

bool CaseExp::CopyBranch(Branch& branch, const output_column& out, unsigned count, unsigned extent, const unsigned* sel,
                         const Namespace* input) {
    if (count == 0) return true;
    if (!branch.value) {
        CopyNull(out, count, sel);
        return true;
    }
    Exp& value = *branch.value;
    EvaluateBranch(branch, count, extent, sel, input);
    const bool single = value.GetPrimitiveStorage() == Column::storageVal;
    input_column from = value.GetResult();
    const output_column to{out.data, nullptr, out.width, out.limit, nullptr};
    const Column& column = *value.GetColumn();
    if (branch.translator) {
        if (!single) {
            branch.translator->Translate(count, sel, column, from, *m_column, out);
            return true;
        }
        // One token for all rows goes through a cell of its own.
        char cell[sizeof(uint64_t)];
        unsigned char flags = 0;
        const output_column one{cell, out.heap, out.width, 1, &flags};
        branch.translator->Translate(1, nullptr, column, from, *m_column, one);
        map_type_type_val(out.width)(count, to, input_column{cell, nullptr, out.width, 1, 0}, sel);
        return true;
    }
    if (!SharesDictionary(column)) return false;
    from.heap = nullptr;
    const unary_func copy = single ? map_type_type_val(out.width) : map_type_type_col(out.width);
    copy(count, to, from, sel);
    return true;
}

// The cell of a null, in `room`, which has 8 bytes.
const char* CaseExp::GetNull(char* room) const {
    std::memset(room, 0xFF, sizeof(uint64_t));  // of tokens
    const usrtype* type = m_column->GetType();
    if (type->fixed())
        std::memcpy(room, type->null_bytes().data(), std::min(sizeof(uint64_t), type->null_bytes().size()));
    return room;
}

void CaseExp::CopyNull(const output_column& out, unsigned count, const unsigned* sel) const {
    char room[sizeof(uint64_t)];
    const output_column to{out.data, nullptr, out.width, out.limit, nullptr};
    map_type_type_val(out.width)(count, to, input_column{GetNull(room), nullptr, out.width, 1, 0}, sel);
}

}  // namespace qve
