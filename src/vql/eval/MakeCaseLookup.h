#pragma once

#include "algebra/Exp.h"

namespace qve {

/// A case that gives each of a list of values another constant, as one lookup in a table of them: what analysts write
/// to recode a column. `arguments` are those of a CaseExp, not bound. Null for a case of another form, and for one with
/// so few values that comparing is faster.
RefCntPtr<Exp> MakeCaseLookup(const Exp::Arguments& arguments);

}  // namespace qve
