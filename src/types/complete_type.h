#pragma once

#include "types/usrprops.h"

namespace qve {

/// The whole property set of the type that a short description means, as statements and schemas write it: `type` (or
/// `builtin` or `datatype`) alone, with `precision`, `scale` and `collation` for text. Names are those of the atom
/// types, "varchar" and its synonyms "string" and "text" (UTF-8 unless `scale` says otherwise), and "boolean",
/// "integer" and "real" for the widest type of their kind. A set that has `factory` is a whole one already. Throws
/// QVE_InvalidArgument 40690 for an unknown name, and what usrtype::resolve throws.
usrprops complete_type(const usrprops& given);

}  // namespace qve
