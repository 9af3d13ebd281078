#pragma once

#include <memory>
#include <span>
#include <string>
#include <vector>

#include "algebra/Exp.h"
#include "algebra/TokenMemo.h"
#include "primitives/column_kernels.h"
#include "primitives/primitive_func.h"
#include "primitives/run_heads.h"

namespace qve {

class DictionaryConstantExp;

/// A call of a kernel. The kernel is chosen when the node is bound, by the operation and the types and storage modes
/// of the arguments, and its function is kept from its first use on.
///
/// Where the operation allows it, compressed arguments are processed by token; a constant that is compared for equality
/// with a dictionary column is looked up in the dictionary once.
///
/// A kernel that must see the values of one dictionary column, all other arguments being constant, is called once for
/// each distinct value that occurs; see TokenMemo. One that costs more than to compare two cells, and has one plain
/// argument beside constants, is called once for each run of equal cells, while the runs of a page are long.
class PrimitiveExp : public Exp {
public:
    /// `klass` is one of the families of `primitive`; `tokens` permits evaluation by token.
    PrimitiveExp(const std::wstring& name, std::wstring klass, std::wstring op, Arguments arguments, bool tokens);

    ~PrimitiveExp() override;

    void Accept(ExpVisitor& visitor) override;
    /// The full name of the kernel; empty before binding.
    std::wstring GetPrimitiveName() const override;
    /// Raises 40354 when there is no kernel for these arguments.
    RefCntPtr<Column> AllocateColumn(const Namespace* input) override;

    const std::wstring& GetClass() const { return m_klass; }
    const std::wstring& GetOperation() const { return m_op; }
    bool AllowsTokens() const { return m_tokens; }
    /// Whether the operation takes no longer than to read its arguments.
    bool IsCheap() const;
    /// Whether the kernel, which is chosen, looks up tokens in a dictionary.
    bool ReadsDictionary() const;

protected:
    /// Chooses the kernel.
    virtual void MakePrimitive();
    /// Chooses the kernel and makes the column of results. Raises 40355 when the node is bound already.
    virtual void MakePrimitiveColumn();
    /// Whether the kernel's result depends on nothing but the values of its arguments.
    virtual bool IsFunctionOfValues() const { return !m_arguments.empty(); }
    /// Whether one result for all rows is given when all arguments have one value for all rows.
    virtual bool GivesSingleResult() const { return m_klass != primitive::klassAggregate && !m_arguments.empty(); }

    /// The function of the kernel. Raises 40378 when it is of another family than F.
    template <class F>
    F Resolve(F& function) {
        if (!function) function = ResolvePrimitive<F>(m_primitive);
        return function;
    }
    /// Evaluates the arguments of a page.
    void EvaluateOperands(unsigned count, unsigned extent, const unsigned* sel, const Namespace* input);
    /// The page of the argument that the kernel takes at `index`.
    input_column GetInput(size_t index) const { return m_operands[index]->GetResult(); }
    /// Makes the column of results refer to the dictionary of the argument whose values they are.
    void FollowDictionary();
    /// The output of a map over `extent` rows, with the not-null flag cleared.
    output_column ReserveOutput(unsigned extent);

    /// Runs a map kernel on the evaluated arguments, where `call(n, out, rows)` calls it.
    template <class Call>
    void RunMap(unsigned count, unsigned extent, const unsigned* sel, Call call);
    /// Runs a select kernel likewise.
    template <class Call>
    unsigned RunSelect(unsigned count, unsigned extent, unsigned* out, const unsigned* sel, Call call);

    const std::wstring m_klass;
    const std::wstring m_op;
    const bool m_tokens;
    primitive* m_primitive = nullptr;
    Arguments m_operands;   // the arguments as the kernel takes them: a constant may have become a token
    bool m_single = false;  // all arguments have one value for all rows

private:
    void BindConstantToDictionary(usrpropkey key);
    bool ShareOneDictionary() const;
    void MakeMemo(const primitive::argument_list& types);
    void FindRunArgument();
    /// The rows of the page at which runs of the argument begin; none when they are too short.
    std::span<const unsigned> FindRuns(unsigned extent);

    RefCntPtr<DictionaryConstantExp> m_tokenConstant;
    RefCntPtr<Exp> m_sharedDictionary;  // the argument whose dictionary the result refers to
    RefCntPtr<Exp> m_memoArgument;
    std::unique_ptr<TokenMemo> m_memo;
    RefCntPtr<Exp> m_runArgument;
    std::vector<unsigned> m_runHeads;
    unsigned m_pagesWithoutRuns = 0;
    std::vector<unsigned char> m_bits;
    bool m_byToken = false;
    bool m_bound = false;
};

template <class Call>
void PrimitiveExp::RunMap(unsigned count, unsigned extent, const unsigned* sel, Call call) {
    if (m_single) {
        call(1, ReserveOutput(1), nullptr);
        return;
    }
    const output_column out = ReserveOutput(extent);
    if (m_runArgument && !sel) {
        if (const std::span<const unsigned> heads = FindRuns(extent); !heads.empty()) {
            call(static_cast<unsigned>(heads.size()), out, heads.data());
            spread_heads(extent, out.data, static_cast<unsigned>(out.width), static_cast<unsigned>(heads.size()),
                         heads.data());
            return;
        }
    }
    if (!m_memo || !m_memo->Begin(*m_memoArgument->GetColumn())) {
        call(count, out, sel);
        return;
    }
    const input_column tokens = m_memoArgument->GetResult();
    const std::span<const unsigned> missing = m_memo->Recall(count, sel, tokens, out);
    if (!missing.empty()) {
        call(static_cast<unsigned>(missing.size()), out, missing.data());
        m_memo->ReportNotNull(*out.flags & column_flags::not_null);
        *out.flags &= static_cast<unsigned char>(~column_flags::not_null);  // that was said of these rows only
        m_memo->Remember(missing, tokens, out);
    }
    if (m_memo->IsNotNull()) *out.flags |= column_flags::not_null;
}

template <class Call>
unsigned PrimitiveExp::RunSelect(unsigned count, unsigned extent, unsigned* out, const unsigned* sel, Call call) {
    const output_column positions{out, nullptr, sizeof(unsigned), extent + 1, nullptr};
    if (m_single) {
        unsigned passing[2];
        if (call(1, output_column{passing, nullptr, sizeof(unsigned), 2, nullptr}, nullptr) == 0) return 0;
        for (unsigned k = 0; k < count; ++k) out[k] = sel ? sel[k] : k;
        return count;
    }
    if (!m_memo || !m_memo->Begin(*m_memoArgument->GetColumn())) return call(count, positions, sel);
    m_bits.resize(extent);
    unsigned char flags = 0;
    const output_column bits{m_bits.data(), nullptr, 1, extent, &flags};
    const input_column tokens = m_memoArgument->GetResult();
    const std::span<const unsigned> missing = m_memo->Recall(count, sel, tokens, bits);
    if (!missing.empty()) {
        const unsigned passed = call(static_cast<unsigned>(missing.size()), positions, missing.data());
        for (const unsigned i : missing) m_bits[i] = 0;
        for (unsigned k = 0; k < passed; ++k) m_bits[out[k]] = 1;
        m_memo->Remember(missing, tokens, bits);
    }
    return sel_copy_bit_col()(count, positions, input_column{m_bits.data(), nullptr, 1, extent, flags}, sel);
}

}  // namespace qve
