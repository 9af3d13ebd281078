#pragma once

#include <string>
#include <vector>

#include "algebra/DataFlow.h"
#include "algebra/Exp.h"
#include "types/usratom.h"
#include "types/usrtype.h"

namespace qve {

/// The selected rows of all pages of a flow, as text: for each row the cells of `names`.
std::vector<std::vector<std::string>> Drain(DataFlow& flow, const std::vector<std::wstring>& names,
                                            unsigned pageSize = 1024);

/// The same of the next page only; its extent tells whether there was one.
std::vector<std::vector<std::string>> NextRows(DataFlow& flow, const std::vector<std::wstring>& names,
                                               unsigned pageSize);

/// The cells of one page of results at the given rows, as text.
std::vector<std::string> PageCells(const Exp& exp, const std::vector<unsigned>& rows);

/// A value of an atom type from its text, or of text from its bytes; "NULL" is a null.
usratom Atom(const std::wstring& type, const std::string& value);
/// A literal of it.
RefCntPtr<Exp> Literal(const std::wstring& type, const std::string& value);

/// Passes another expression on, and counts the rows it was asked for.
class CountingExp : public Exp {
public:
    explicit CountingExp(RefCntPtr<Exp> argument);
    void Accept(ExpVisitor&) override {}
    input_column GetResult() const override { return m_arguments[0]->GetResult(); }
    RefCntPtr<Column> AllocateColumn(const Namespace* input) override;
    void Evaluate(unsigned count, unsigned extent, const unsigned* sel, const Namespace* input) override;

    unsigned calls = 0;
    unsigned rows = 0;
};

}  // namespace qve
