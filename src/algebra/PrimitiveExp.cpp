#include "algebra/PrimitiveExp.h"

#include <algorithm>
#include <bit>

#include "algebra/DictionaryConstantExp.h"
#include "algebra/ExpVisitor.h"
#include "algebra/status.h"
#include "primitives/primitive_directory.h"
#include "primitives/primitive_result.h"
#include "storage/Column.h"
#include "storage/stream/TempFileDataStream.h"
#include "system/QuillonException.h"
#include "system/unicode.h"
#include "types/usrtype.h"

namespace qve {

namespace {

// A run must have so many rows on average, and after so many pages with shorter ones they are not looked for any more.
constexpr unsigned meanRun = 16;
constexpr unsigned fruitlessPages = 8;
constexpr unsigned headRoom = 32;

}  // namespace

PrimitiveExp::PrimitiveExp(const std::wstring& name, std::wstring klass, std::wstring op, Arguments arguments,
                           bool tokens)
    : Exp(name, std::move(arguments)), m_klass(std::move(klass)), m_op(std::move(op)), m_tokens(tokens) {}

PrimitiveExp::~PrimitiveExp() = default;

void PrimitiveExp::Accept(ExpVisitor& visitor) {
    visitor.VisitPrimitiveExp(*this);
}

std::wstring PrimitiveExp::GetPrimitiveName() const {
    return m_primitive ? m_primitive->name() : std::wstring();
}

RefCntPtr<Column> PrimitiveExp::AllocateColumn(const Namespace* input) {
    if (m_bound) return m_column;
    Exp::AllocateColumn(input);
    MakePrimitiveColumn();
    m_bound = true;
    return m_column;
}

bool PrimitiveExp::IsCheap() const {
    static constexpr std::wstring_view cheap[] = {L"plus", L"minus", L"times", L"divide", L"negate", L"eq",       L"ne",
                                                  L"lt",   L"le",    L"gt",    L"ge",     L"isnull", L"isnotnull"};
    return std::find(std::begin(cheap), std::end(cheap), m_op) != std::end(cheap);
}

bool PrimitiveExp::ReadsDictionary() const {
    return !m_byToken && std::any_of(m_operands.begin(), m_operands.end(),
                                     [](const auto& operand) { return operand->GetColumn()->IsCompressed(); });
}

// Tokens of different dictionaries do not compare. What is still to be built has none yet that could be compared.
bool PrimitiveExp::ShareOneDictionary() const {
    const Column* shared = nullptr;
    for (const RefCntPtr<Exp>& operand : m_operands) {
        const Column& column = *operand->GetColumn();
        if (!column.IsCompressed()) continue;
        if (shared && &column != shared && (!column.GetDict() || column.GetDict() != shared->GetDict())) return false;
        shared = &column;
    }
    return true;
}

void PrimitiveExp::BindConstantToDictionary(usrpropkey key) {
    if (key != usrpropkey::distinct || m_operands.size() != 2) return;
    for (size_t i = 0; i < 2; ++i) {
        const auto constant = DynamicPtrCast<ConstantExp>(m_operands[i]);
        const RefCntPtr<Column>& column = m_operands[1 - i]->GetColumn();
        if (!constant || m_operands[1 - i]->IsConstant()) continue;
        if (!column->IsCompressed() || !column->HasProperty(key)) return;
        // The left argument's collation decides; the dictionary knows its own only.
        if (i == 0 && constant->GetColumn()->GetType()->collation() != column->GetType()->collation()) return;
        m_tokenConstant = DictionaryConstantExp::Make(constant->GetValue(), column);
        if (m_tokenConstant) m_operands[i] = m_tokenConstant;
        return;
    }
}

void PrimitiveExp::MakePrimitive() {
    m_operands = m_arguments;
    const auto isSingle = [](const RefCntPtr<Exp>& operand) {
        return operand->GetPrimitiveStorage() == Column::storageVal;
    };
    m_single = GivesSingleResult() && std::all_of(m_operands.begin(), m_operands.end(), isSingle);

    usrpropkey key = m_tokens ? primitive_result::resolve(m_op).tokenprop() : usrpropkey::empty;
    if (key != usrpropkey::empty) {
        BindConstantToDictionary(key);
        if (!ShareOneDictionary()) key = usrpropkey::empty;
    }
    primitive::argument_list types;
    for (const RefCntPtr<Exp>& operand : m_operands) {
        // A single row of single values is a vector like any other.
        const Column& column = *operand->GetColumn();
        m_byToken = m_byToken || (column.IsCompressed() && key != usrpropkey::empty && column.HasProperty(key));
        types.emplace_back(operand->GetPrimitiveType(key),
                           m_single ? primitive::storageCol : operand->GetPrimitiveStorage());
    }
    if (m_klass == primitive::klassAggregate) types.emplace_back(L"ulng", primitive::storageCol);

    for (primitive* candidate : primitive::resolve(m_op, types)) {
        if (candidate->klass() == m_klass) {
            m_primitive = candidate;
            MakeMemo(types);
            return;
        }
    }
    throw QVE_InvalidArgument(status::PrimitiveExp_MakePrimitive,
                              "PrimitiveExp::MakePrimitive: " + narrow(primitive_directory::signature(m_op, types)));
}

// The one argument that is not constant must come as tokens whose values the kernel reads.
void PrimitiveExp::MakeMemo(const primitive::argument_list& types) {
    if (m_single || !IsFunctionOfValues() || m_klass == primitive::klassAggregate) return;
    for (size_t i = 0; i < m_operands.size(); ++i) {
        if (m_operands[i]->IsConstant()) continue;
        const bool byValue = types[i].first.starts_with(L"usr") && types[i].second == primitive::storageCol;
        if (m_memoArgument || !byValue || !m_operands[i]->GetColumn()->IsCompressed()) {
            m_memoArgument = nullptr;
            return;
        }
        m_memoArgument = m_operands[i];
    }
    if (m_memoArgument && m_klass == primitive::klassSelect) m_memo = std::make_unique<TokenMemo>(1);
}

void PrimitiveExp::FindRunArgument() {
    if (m_single || m_memo || IsCheap() || !IsFunctionOfValues() || m_klass != primitive::klassMap) return;
    const unsigned width = m_column->GetTokenSize();
    if (width > sizeof(uint64_t) || !std::has_single_bit(width)) return;
    for (const RefCntPtr<Exp>& operand : m_operands) {
        if (operand->IsConstant()) continue;
        const Column& column = *operand->GetColumn();
        const bool plain = !column.IsCompressed() && operand->GetPrimitiveStorage() == Column::storageCol &&
                           column.GetType()->fixed() && column.GetTokenSize() <= sizeof(uint64_t);
        if (m_runArgument || !plain) {
            m_runArgument = nullptr;
            return;
        }
        m_runArgument = operand;
    }
}

std::span<const unsigned> PrimitiveExp::FindRuns(unsigned extent) {
    const unsigned most = extent / meanRun;
    m_runHeads.resize(std::max<size_t>(m_runHeads.size(), most + headRoom));
    const input_column cells = m_runArgument->GetResult();
    const unsigned runs = run_heads(extent, cells.data, static_cast<unsigned>(cells.width), m_runHeads.data(), most);
    if (runs > most) {
        if (++m_pagesWithoutRuns == fruitlessPages) m_runArgument = nullptr;
        return {};
    }
    m_pagesWithoutRuns = 0;
    return {m_runHeads.data(), runs};
}

void PrimitiveExp::MakePrimitiveColumn() {
    if (m_column->GetCount() > 0) {
        throw QVE_InvalidArgument(status::PrimitiveExp_MakePrimitiveColumn, "PrimitiveExp::MakePrimitiveColumn");
    }
    MakePrimitive();
    std::vector<usrprops> inputs;
    for (const RefCntPtr<Exp>& operand : m_operands) inputs.push_back(operand->GetProperties());
    usrprops properties = primitive_result::resolve(m_op).result_props(m_primitive, inputs);
    std::wstring name = GetName();
    if (name.empty() && !m_arguments.empty()) name = m_arguments[0]->GetName();
    properties.set(usrpropkey::name, name);
    properties.erase(usrpropkey::encoding);
    if (m_single) {
        properties.set(usrpropkey::storagetype, Column::storageVal);
    } else {
        properties.erase(usrpropkey::storagetype);
    }
    m_isConstant = GivesSingleResult() && std::all_of(m_arguments.begin(), m_arguments.end(),
                                                      [](const auto& argument) { return argument->IsConstant(); });

    RefCntPtr<DataStream> dictionary;
    if (properties.has(usrpropkey::compression)) {
        if (m_byToken || properties.has(usrpropkey::result_share_dictionary)) {
            const auto found = std::find_if(m_operands.begin(), m_operands.end(),
                                            [](const auto& operand) { return operand->GetColumn()->IsCompressed(); });
            if (found != m_operands.end()) m_sharedDictionary = *found;
        }
        properties.erase(usrpropkey::result_share_dictionary);
        if (m_sharedDictionary) {
            dictionary = m_sharedDictionary->GetColumn()->GetDict();
        } else {
            // A heap stores each value once, as values come; width and order are of another dictionary.
            properties.set(usrpropkey::distinct, true);
            properties.erase(usrpropkey::comparable);
            properties.erase(usrpropkey::storagewidth);
        }
        if (!dictionary) dictionary = MakeRef<TempFileDataStream>();
    }
    m_column = MakeRef<Column>(std::move(properties), MakeRef<TempFileDataStream>(), dictionary);
    if (m_memoArgument) m_memo = std::make_unique<TokenMemo>(m_column->GetTokenSize());
    FindRunArgument();
}

void PrimitiveExp::EvaluateOperands(unsigned count, unsigned extent, const unsigned* sel, const Namespace* input) {
    EvaluateArguments(count, extent, sel, input);
    if (m_tokenConstant) m_tokenConstant->Refresh();
}

// A table below, built since this node was bound, has its own dictionary.
void PrimitiveExp::FollowDictionary() {
    if (m_sharedDictionary && m_column->GetDict() != m_sharedDictionary->GetColumn()->GetDict()) {
        m_column->SetDict(m_sharedDictionary->GetColumn()->GetDict());
    }
}

output_column PrimitiveExp::ReserveOutput(unsigned extent) {
    FollowDictionary();
    const output_column out = ReserveBuffer(extent);
    *out.flags &= static_cast<unsigned char>(~column_flags::not_null);
    return out;
}

}  // namespace qve
