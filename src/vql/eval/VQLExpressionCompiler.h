#pragma once

#include <atomic>
#include <string>
#include <vector>

#include "algebra/MomentsExp.h"
#include "system/RefCntPtr.h"
#include "types/usrprops.h"
#include "vql/VQLExpression.h"
#include "vql/VQLExpressionVisitor.h"

namespace qve {

class Column;
class Exp;
class Namespace;
class VQLFunctionTable;

/// Turns a checked expression into an expression tree of the engine, over the columns of one namespace.
///
/// The compiler predicts the type of each node from the descriptions of the columns, without loading any, and places
/// conversions where there is no kernel for the types at hand. Constant expressions are computed at once.
class VQLExpressionCompiler : private VQLExpressionVisitor {
public:
    /// What the root of the expression is for: a column of values, the rows that pass, or a measure of groups.
    enum class ContextType { map, select, aggregate };

    /// `source` is what the tree will be bound to; it is only asked for descriptions.
    VQLExpressionCompiler(ContextType context, const Namespace& source);
    ~VQLExpressionCompiler() override;

    /// The tree, unbound. Throws VQLParseException with the position of the part at fault: 49015 for a null of unknown
    /// type, 49016 for a literal of no type, 49017 for a call that has no form.
    /// Writes primitive type, storage and properties back on to the parts of `expression`.
    RefCntPtr<Exp> operator()(const RefCntPtr<VQLExpression>& expression);

    /// Whether constant expressions are computed at compile time; on by default. Process-wide.
    static void SetUseConstantFolding(bool on) { s_useConstantFolding = on; }
    static bool GetUseConstantFolding() { return s_useConstantFolding.load(std::memory_order_relaxed); }

private:
    /// A compiled part: the tree and what its column will be like.
    struct Compiled {
        RefCntPtr<Exp> exp;
        RefCntPtr<Column> description;
        std::wstring Type() const;
        bool IsConstant() const;
    };
    using Operands = std::vector<Compiled>;

    void VisitLiteral(VQLLiteralExpression& expression) override;
    void VisitIdentifier(VQLIdentifierExpression& expression) override;
    void VisitFuncall(VQLFuncallExpression& expression) override;
    void VisitCase(VQLCaseExpression& expression) override;

    Compiled Compile(const RefCntPtr<VQLExpression>& expression, ContextType context);
    Operands CompileArguments(const VQLExpressions& arguments, ContextType context);
    /// The operands with the conversions that some kernel of the operation needs; unchanged when none helps.
    Operands Convert(const VQLFuncallExpression& call, const wchar_t* klass, Operands operands) const;
    Compiled MakeCall(const VQLFuncallExpression& call, const wchar_t* klass, const Operands& operands) const;
    Compiled MakeCast(const Compiled& value, const usrprops& target) const;
    Compiled MakeQuantile(const VQLFuncallExpression& call, const Operands& operands) const;
    Compiled MakeMoments(const std::wstring& op, MomentsExp::Statistic statistic, const Operands& operands) const;
    Compiled MakeConstant(const class usratom& atom) const;
    /// The literal as narrow as the type of the column that it is compared with, so that both have one width.
    void NarrowLiteral(Operands& operands) const;
    /// The constant that `value` is, when it is one and folding is on.
    Compiled Fold(Compiled value);
    void Push(VQLExpression& expression, Compiled compiled);

    const Namespace& m_source;
    ContextType m_context;
    Compiled m_result;
    unsigned m_parsed = 0;
    unsigned m_folded = 0;

    static std::atomic<bool> s_useConstantFolding;
};

}  // namespace qve
