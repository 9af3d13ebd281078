#pragma once

#include "vql/VQLExpression.h"
#include "vql/VQLMacros.h"
#include "vql/VQLQuery.h"

namespace qve {

/// Replaces each call of a macro by its text, with the arguments in the places of %1, %2, ... Arguments are expanded
/// first, the text afterwards. Throws VQLParseException 49018 "wrong number of arguments to macro (%1)" and 49019
/// "unresolved identifier in macro expansion (%1)", VQLException 48029 "recursive macro expansion detected (%1)".
RefCntPtr<VQLQuery> VQLExpandMacros(SymbolDictionary& dictionary, const VQLMacroMap& macros,
                                    const RefCntPtr<VQLQuery>& query);
RefCntPtr<VQLExpression> VQLExpandMacros(SymbolDictionary& dictionary, const VQLMacroMap& macros,
                                         const RefCntPtr<VQLExpression>& expression);

}  // namespace qve
