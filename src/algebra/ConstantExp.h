#pragma once

#include <string>

#include "algebra/Exp.h"
#include "types/usratom.h"

namespace qve {

/// A literal: one value, of storage "val". A value of a heap type lies in a dictionary of the node's own.
class ConstantExp : public Exp {
public:
    explicit ConstantExp(const usratom& atom);
    ConstantExp(const std::wstring& name, const usratom& atom);
    /// The value that a column of storage "val" holds.
    explicit ConstantExp(RefCntPtr<Column> value);
    ~ConstantExp() override;

    void Accept(ExpVisitor& visitor) override;
    RefCntPtr<Column> AllocateColumn(const Namespace* input) override;
    void Evaluate(unsigned count, unsigned extent, const unsigned* sel, const Namespace* input) override;

    /// Appends a value, making a list of values for operators that read several.
    void AddValue(const usratom& atom);
    /// The value at `index`; it owns its bytes.
    usratom GetValue(unsigned index = 0) const;
    unsigned GetValueCount() const;
    bool IsNull() const;

    /// The properties of a column that can hold the atom.
    static usrprops AtomProperties(const usratom& atom);
};

}  // namespace qve
