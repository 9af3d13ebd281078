#pragma once

#include <optional>
#include <string>
#include <vector>

#include "algebra/ExpVisitor.h"
#include "types/usratom.h"

namespace qve {

class Exp;

/// A condition on a few columns that lists the values they may have: an or of ands of comparisons, each of which is
/// "eq" of a column and a constant, or "isnull" of a column, where every and names each column once. What is left of
/// one is its products.
struct SumOfProducts {
    /// The values of the columns, in their order; a null where the column is to be null. A product that can never be
    /// true, since it compares with a null, is left out.
    using Product = std::vector<usratom>;

    std::vector<Product> products;

    /// Reads a condition on `columns`, bound or not. Raises 40411 with the first thing that does not fit.
    static SumOfProducts Extract(Exp& condition, const std::vector<std::wstring>& columns);
    /// The same, without a value for a condition of another form.
    static std::optional<SumOfProducts> Find(Exp& condition, const std::vector<std::wstring>& columns);
};

}  // namespace qve
