#pragma once

#include <string>
#include <vector>

#include "system/RefCntPtr.h"
#include "types/DataType.h"
#include "types/input_column.h"
#include "types/output_column.h"
#include "types/usrprops.h"

namespace qve {

class Column;
class ExpVisitor;
class Namespace;
class ProgressCallback;

/// A node of an expression: it owns a column that holds one page of results. Life of a tree, called by the operator
/// that owns it: construct; AllocateColumn once; for each page Evaluate, Select or Aggregate; then read GetResult. One
/// thread at a time.
///
/// In what follows `count` is the number of rows to process, which is the length of the selection `sel`, or `extent`
/// when `sel` is null; `extent` is the number of rows of the page, selected or not.
class Exp : public RefCntObject {
public:
    using Arguments = std::vector<RefCntPtr<Exp>>;

    ~Exp() override;

    /// The name of the kernel, for nodes that call one once they are bound; else empty.
    virtual std::wstring GetPrimitiveName() const;
    /// "col" or "val", as the column says.
    virtual std::wstring GetPrimitiveStorage() const;
    /// The page that was last computed; position i is row i of the page. Valid until the next call on the node.
    virtual input_column GetResult() const;
    virtual void Accept(ExpVisitor& visitor) = 0;
    /// Binds the node and its arguments to the columns of `input`, and returns the column of results. Further calls
    /// only return it.
    virtual RefCntPtr<Column> AllocateColumn(const Namespace* input);
    /// Writes the ascending positions of the rows for which the node is true to `out`, which has room for `extent` + 1
    /// positions, and returns how many.
    virtual unsigned Select(unsigned count, unsigned extent, unsigned* out, const unsigned* sel,
                            const Namespace* input);
    /// Computes the result of the given rows; the other positions of the column keep what they held.
    virtual void Evaluate(unsigned count, unsigned extent, const unsigned* sel, const Namespace* input);
    /// Folds the page into the accumulators, where `groups` has the accumulator of each row. The arguments have been
    /// evaluated. Raises 40158 for a node that is no aggregate.
    virtual void Aggregate(unsigned count, input_column groups, const unsigned* sel);

    /// Whether the accumulators are results only after FinishAggregate.
    virtual bool NeedsFinish() const { return false; }
    /// Turns the accumulators of all `groups` into results, when no more pages come. Throws CancelledException when
    /// `progress`, which may be null, says so.
    virtual void FinishAggregate(uint64_t groups, const ProgressCallback* progress);

    const Arguments& GetArguments() const { return m_arguments; }
    /// True when the value is the same on every page, so that the node is evaluated at most once.
    bool IsConstant() const { return m_isConstant; }

    /// The properties of the column of results; before binding at least the name.
    const usrprops& GetProperties() const;
    /// Names the column of results.
    void SetName(const std::wstring& name);
    std::wstring GetName() const;
    /// The type name by which a kernel is chosen for this argument: by token when the column is compressed and has the
    /// property `key`, see primitive_result::tokenprop.
    std::wstring GetPrimitiveType(usrpropkey key) const;
    DataType GetDataType() const;
    /// The column of results.
    const RefCntPtr<Column>& GetColumn() const { return m_column; }
    /// Makes room for `extent` rows in the column of results and returns where they go.
    output_column ReserveBuffer(unsigned extent);

protected:
    Exp();
    explicit Exp(Arguments arguments);
    /// With a column that so far has only a name.
    Exp(const std::wstring& name, Arguments arguments);

    /// Evaluates the arguments; a constant one only the first time. Called by every Evaluate of a node with arguments.
    void EvaluateArguments(unsigned count, unsigned extent, const unsigned* sel, const Namespace* input);

    Arguments m_arguments;
    RefCntPtr<Column> m_column;
    bool m_isConstant = false;

private:
    bool m_constantsEvaluated = false;
};

}  // namespace qve
