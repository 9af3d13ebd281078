#pragma once

#include <string>
#include <vector>

#include "algebra/Exp.h"
#include "primitives/primitive_func.h"

namespace qve {

/// A call of a kernel. The kernel is chosen when the node is bound, by the operation and the types and storage modes
/// of the arguments, and its function is kept from its first use on.
///
/// Where the operation allows it, compressed arguments are processed by token; a constant that is compared for equality
/// with a dictionary column is looked up in the dictionary once.
class PrimitiveExp : public Exp {
public:
    /// `klass` is one of the families of `primitive`; `tokens` permits evaluation by token.
    PrimitiveExp(const std::wstring& name, std::wstring klass, std::wstring op, Arguments arguments, bool tokens);

    void Accept(ExpVisitor& visitor) override;
    /// The full name of the kernel; empty before binding.
    std::wstring GetPrimitiveName() const override;
    /// Raises 40354 when there is no kernel for these arguments.
    RefCntPtr<Column> AllocateColumn(const Namespace* input) override;

    const std::wstring& GetClass() const { return m_klass; }
    const std::wstring& GetOperation() const { return m_op; }
    bool AllowsTokens() const { return m_tokens; }

protected:
    /// Chooses the kernel.
    virtual void MakePrimitive();
    /// Chooses the kernel and makes the column of results. Raises 40355 when the node is bound already.
    virtual void MakePrimitiveColumn();

    /// The function of the kernel. Raises 40378 when it is of another family than F.
    template <class F>
    F Resolve(F& function) {
        if (!function) function = ResolvePrimitive<F>(m_primitive);
        return function;
    }
    /// The output of a map over `extent` rows, with the not-null flag cleared.
    output_column ReserveOutput(unsigned extent);
    /// The page of the argument that the kernel takes at `index`.
    input_column GetInput(size_t index) const { return m_operands[index]->GetResult(); }

    const std::wstring m_klass;
    const std::wstring m_op;
    const bool m_tokens;
    primitive* m_primitive = nullptr;
    Arguments m_operands;  // the arguments as the kernel takes them: a constant may have become a token

private:
    void BindConstantToDictionary();
    bool ShareOneDictionary() const;

    bool m_bound = false;
};

}  // namespace qve
