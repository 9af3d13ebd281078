#pragma once

#include "algebra/Exp.h"

namespace qve {

/// The tokens of a compressed column as plain numbers. The page is the argument's own: nothing is copied.
class DataExp : public Exp {
public:
    explicit DataExp(RefCntPtr<Exp> argument);

    void Accept(ExpVisitor& visitor) override;
    RefCntPtr<Column> AllocateColumn(const Namespace* input) override;
    input_column GetResult() const override;
    void Evaluate(unsigned count, unsigned extent, const unsigned* sel, const Namespace* input) override;

private:
    bool m_bound = false;
};

}  // namespace qve
