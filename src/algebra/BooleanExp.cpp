#include "algebra/BooleanExp.h"

#include <algorithm>
#include <cstring>

#include "algebra/status.h"
#include "primitives/primitive_directory.h"
#include "storage/Column.h"
#include "storage/stream/TempFileDataStream.h"
#include "system/QuillonException.h"

namespace qve {

namespace {

bool IsSelectNode(const Exp& exp) {
    const auto* call = dynamic_cast<const PrimitiveExp*>(&exp);
    return call && call->GetClass() == primitive::klassSelect;
}

}  // namespace

BooleanExp::BooleanExp(const std::wstring& name, const std::wstring& op, RefCntPtr<Exp> left, RefCntPtr<Exp> right)
    : BooleanExp(name, op, Arguments{std::move(left), std::move(right)}) {}

BooleanExp::BooleanExp(const std::wstring& name, const std::wstring& op, Arguments arguments)
    : PrimitiveExp(name, primitive::klassMap, op, std::move(arguments), false) {}

RefCntPtr<Column> BooleanExp::AllocateColumn(const Namespace* input) {
    if (!m_combiners.empty()) return m_column;
    Exp::AllocateColumn(input);
    MakeColumn();
    return m_column;
}

void BooleanExp::MakeColumn() {
    m_single = true;
    m_isConstant = true;
    for (const RefCntPtr<Exp>& argument : m_arguments) {
        const bool isNode = IsSelectNode(*argument);
        if (!isNode && argument->GetPrimitiveType(usrpropkey::empty) != L"bit") {
            throw QVE_InvalidArgument(status::BooleanExp_MakeColumn, "BooleanExp::MakeColumn: Non-Boolean argument");
        }
        m_single = m_single && !isNode && argument->GetPrimitiveStorage() == Column::storageVal;
        m_isConstant = m_isConstant && argument->IsConstant();
    }
    m_operands = m_arguments;
    for (const RefCntPtr<Exp>& argument : m_arguments) {
        const std::wstring storage = IsSelectNode(*argument) ? primitive::storageCol : argument->GetPrimitiveStorage();
        for (primitive* candidate : primitive::resolve(m_op, {{L"bit", primitive::storageCol}, {L"bit", storage}})) {
            if (candidate->klass() == m_klass) m_primitive = candidate;
        }
        m_combiners.push_back(ResolvePrimitive<binary_func>(m_primitive));
    }
    m_evaluated.assign(m_arguments.size(), 0);
    m_passes.assign(m_arguments.size(), -1);

    usrprops properties = primitive::primitive_props(L"bit");
    properties.set(usrpropkey::name, GetName());
    if (m_single) properties.set(usrpropkey::storagetype, Column::storageVal);
    m_column = MakeRef<Column>(std::move(properties), MakeRef<TempFileDataStream>());
}

input_column BooleanExp::EvaluateArgument(size_t argument, unsigned count, unsigned extent, const unsigned* sel,
                                          const Namespace* input) {
    Exp& exp = *m_arguments[argument];
    if (!exp.IsConstant()) {
        exp.Evaluate(count, extent, sel, input);
    } else if (!m_evaluated[argument]) {
        exp.Evaluate(1, 1, nullptr, input);
        m_evaluated[argument] = 1;
    }
    return exp.GetResult();
}

void BooleanExp::Evaluate(unsigned count, unsigned extent, const unsigned* sel, const Namespace* input) {
    if (m_single) {
        count = extent = 1;
        sel = nullptr;
    }
    const output_column out = ReserveOutput(extent);
    unsigned char* results = out.values<unsigned char>();
    const unsigned char neutral = IsAnd() ? 1 : 0;
    std::memset(results, neutral, extent);
    m_undecided.resize(std::max<size_t>(m_undecided.size(), extent + size_t{1}));

    unsigned char flags = column_flags::not_null;
    const input_column soFar{out.data, nullptr, 1, extent, 0};
    for (size_t argument = 0; argument < m_arguments.size() && count > 0; ++argument) {
        const input_column values = EvaluateArgument(argument, count, extent, sel, input);
        flags &= values.flags;
        m_combiners[argument](count, output_column{out.data, nullptr, 1, out.limit, nullptr}, soFar, values, sel);
        if (argument + 1 == m_arguments.size()) break;
        // For and a row stays open while it is not false, for or while it is not true.
        unsigned open = 0;
        for (unsigned k = 0; k < count; ++k) {
            const unsigned i = sel ? sel[k] : k;
            m_undecided[open] = i;
            open += results[i] == (neutral ^ 1) ? 0 : 1;
        }
        if (open != count) sel = m_undecided.data();
        count = open;
    }
    *out.flags |= flags & column_flags::not_null;
}

bool BooleanExp::ConstantPasses(size_t argument, const Namespace* input) {
    signed char& passes = m_passes[argument];
    if (passes < 0) {
        unsigned passing[2];
        passes = m_arguments[argument]->Select(1, 1, passing, nullptr, input) ? 1 : 0;
    }
    return passes == 1;
}

unsigned BooleanExp::Select(unsigned count, unsigned extent, unsigned* out, const unsigned* sel,
                            const Namespace* input) {
    return IsAnd() ? SelectAll(count, extent, out, sel, input) : SelectAny(count, extent, out, sel, input);
}

unsigned BooleanExp::SelectAll(unsigned count, unsigned extent, unsigned* out, const unsigned* sel,
                               const Namespace* input) {
    m_undecided.resize(std::max<size_t>(m_undecided.size(), extent + size_t{1}));
    const unsigned* rows = sel;
    for (size_t argument = 0; argument < m_arguments.size() && count > 0; ++argument) {
        if (m_arguments[argument]->IsConstant()) {
            if (!ConstantPasses(argument, input)) return 0;
            continue;
        }
        unsigned* const next = rows == out ? m_undecided.data() : out;  // a kernel must not write what it reads
        count = m_arguments[argument]->Select(count, extent, next, rows, input);
        rows = next;
    }
    if (rows != out) {
        for (unsigned k = 0; k < count; ++k) out[k] = rows ? rows[k] : k;
    }
    return count;
}

unsigned BooleanExp::SelectAny(unsigned count, unsigned extent, unsigned* out, const unsigned* sel,
                               const Namespace* input) {
    m_undecided.resize(std::max<size_t>(m_undecided.size(), extent + size_t{1}));
    m_hits.resize(m_undecided.size());
    m_marks.assign(extent, 0);
    const unsigned* rows = sel;
    unsigned open = count;
    for (size_t argument = 0; argument < m_arguments.size() && open > 0; ++argument) {
        if (m_arguments[argument]->IsConstant()) {
            if (!ConstantPasses(argument, input)) continue;
            for (unsigned k = 0; k < open; ++k) m_marks[rows ? rows[k] : k] = 1;
            break;
        }
        const unsigned hits = m_arguments[argument]->Select(open, extent, m_hits.data(), rows, input);
        for (unsigned k = 0; k < hits; ++k) m_marks[m_hits[k]] = 1;
        unsigned rest = 0;
        for (unsigned k = 0; k < open; ++k) {
            const unsigned i = rows ? rows[k] : k;
            m_undecided[rest] = i;
            rest += m_marks[i] ^ 1;
        }
        rows = m_undecided.data();
        open = rest;
    }
    unsigned passed = 0;
    for (unsigned k = 0; k < count; ++k) {
        const unsigned i = sel ? sel[k] : k;
        out[passed] = i;
        passed += m_marks[i];
    }
    return passed;
}

}  // namespace qve
