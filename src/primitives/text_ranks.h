#pragma once

#include <cstddef>
#include <vector>

#include "types/output_column.h"

namespace qve {

/// The places of `n` tokens in the order of their values, nulls first; equal values have equal places. Each distinct
/// token is looked at once, and only these are compared.
std::vector<unsigned> text_ranks(std::size_t n, const output_column& tokens);

}  // namespace qve
