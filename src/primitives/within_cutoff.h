#pragma once

namespace qve {

/// Whether any of the values may be not below `cutoff`, or not above it. Errs on the safe side: what is not a number
/// counts as such a value.
bool any_not_below(const double* values, unsigned count, double cutoff);
bool any_not_above(const double* values, unsigned count, double cutoff);

}  // namespace qve
