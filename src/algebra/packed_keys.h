#pragma once

#include <string>
#include <vector>

#include "algebra/Exp.h"
#include "system/RefCntPtr.h"

namespace qve {

class Column;
class Namespace;

/// Whether the cells of a column stand for its values, bit by bit: they are whole numbers or dates, or tokens that are
/// unique.
bool cells_are_keys(const Column& column);

/// The columns `keys` of `input` as one number, of at most `bits` (16 or 32), for a grouping that compares nothing: the
/// column itself where there is one, else the chain of "radixhash" and "radixgrp" named `name`, bound to `input`. Null
/// when the keys do not fit, or are of a type or storage that has no such number.
RefCntPtr<Exp> resolve_packed_keys(const Namespace& input, const std::vector<std::wstring>& keys, unsigned bits,
                                   const std::wstring& name);

}  // namespace qve
