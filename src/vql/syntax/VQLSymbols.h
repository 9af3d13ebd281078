#pragma once

#include <string>

namespace qve {

/// The words that give the forms of the language their meaning. The lexer knows none of them: they are plain symbols
/// to it, and may be used as column names.
struct VQLSymbols {
    static const std::wstring symSelect, symTable, symDomain, symProject, symRestrict, symExchange, symPivot,
        symAggregate, symOrder, symTop, symExchangeStart, symExchangeStop, symLookup, symJoin, symLeftJoin,
        symRightJoin, symFullJoin, symText, symTransform, symIndexTable, symIndexJoin, symAppend, symRemoteQuery,
        symAsc, symDesc, symNull, symIsLookup, symIND, symCase;
};

}  // namespace qve
