#pragma once

#include <string>

#include "algebra/Exp.h"

namespace qve {

/// A column of the input, by name. Its page is the input's own: nothing is copied.
class ColumnExp : public Exp {
public:
    /// The column named as `column` is, with its type and properties.
    explicit ColumnExp(const RefCntPtr<Column>& column);
    /// The column that the property "name" names.
    explicit ColumnExp(usrprops properties);
    explicit ColumnExp(const std::wstring& name);
    ~ColumnExp() override;

    void Accept(ExpVisitor& visitor) override;
    input_column GetResult() const override;
    RefCntPtr<Column> AllocateColumn(const Namespace* input) override;
    void Evaluate(unsigned count, unsigned extent, const unsigned* sel, const Namespace* input) override;

    /// The name of the column of the input. SetName changes the name of the result only.
    const std::wstring& GetColumnName() const { return m_columnName; }

protected:
    ColumnExp(const std::wstring& name, const std::wstring& columnName);

private:
    void ShareSource();

    std::wstring m_columnName;
    RefCntPtr<Column> m_source;
    input_column m_result;
};

}  // namespace qve
