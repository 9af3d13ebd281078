#pragma once

#include <memory>
#include <string>
#include <vector>

#include "algebra/DataFlow.h"
#include "types/input_column.h"
#include "types/output_column.h"
#include "types/usrprops.h"

namespace qve {

class Exp;
class TokenTranslator;
class usrtype;

/// A column made of pages of several others: what brings the cells of each to one type and dictionary.
class Appender {
public:
    /// One of the columns it is made of; the flow outlives the appender.
    struct Input {
        const DataFlow* flow;
        std::wstring column;
    };

    /// The column `name`, of the type that all inputs widen to. Throws (status::Append_types).
    Appender(std::wstring name, std::vector<Input> inputs);
    ~Appender();

    /// What is known without loading anything.
    const RefCntPtr<Column>& Describe() const { return m_description; }
    /// Binds to the columns of all inputs, when first called. The page of the result begins at its row 0.
    RefCntPtr<Column> Load();
    /// Brings the page of input `index` over: `count` rows by `selection`, or all of its `extent` rows.
    void Evaluate(size_t index, unsigned count, unsigned extent, const unsigned* selection);
    /// Takes over what input `index`, whose rows began at `firstRow`, tells at its end of the values that it refused.
    void TakeErrors(size_t index, uint64_t firstRow);
    void ForgetErrors();

private:
    /// The column of one input.
    struct Source {
        const DataFlow* flow;
        std::wstring column;
        RefCntPtr<Exp> exp;
        std::unique_ptr<TokenTranslator> translator;
    };

    /// The type that all inputs widen to. Throws (status::Append_types).
    const usrtype* ReconcileTypes(const std::vector<RefCntPtr<Column>>& columns) const;
    usrprops ReconcileProperties(const usrtype& type, const std::vector<RefCntPtr<Column>>& columns) const;
    /// The column of an input as an expression whose cells are of the type, or texts to be stored anew.
    static RefCntPtr<Exp> Widen(const std::wstring& name, const Column& column, const usrtype& type);
    /// Whether the inputs refer to one dictionary that no longer changes, so that tokens can be copied as they are.
    bool SharesDictionary() const;
    void CopyValues(unsigned count, const unsigned* selection, const Column& from, const input_column& in,
                    const output_column& out) const;

    const std::wstring m_name;
    RefCntPtr<Column> m_description;
    std::vector<Source> m_sources;
    RefCntPtr<Column> m_target;  // null before Load
    bool m_shared = false;
};

}  // namespace qve
