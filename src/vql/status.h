#pragma once

namespace qve::status {

// 48017 to 48036 are this folder's; the texts stand behind the numbers.
inline constexpr int VQLColumnSpace_GetColumn = 48017;      // "no such column %1"
inline constexpr int VQLTableSpace_NoSuchTable = 48018;     // "no such table %1"
inline constexpr int VQLTableSpace_BadIdentifier = 48019;   // "bad identifier (%1)"
inline constexpr int DatabaseVQLTableSpace_Schema = 48020;  // "no such schema (%1)"
inline constexpr int VQLTableSpaceFamily_GetTable = 48021;  // "no such database (%1)"
inline constexpr int VQLCaseExpression_Arguments = 48024;   // "invalid number of case arguments"
inline constexpr int VQLQuery_GetColumnSpace = 48025;       // "VQLQuery: columnspace not defined"
inline constexpr int CreateFunctions_Insert = 48026;        // "return type cannot be null"
inline constexpr int VQLQueryFormatter_VisitJoin = 48027;   // "unknown join type"
inline constexpr int VQLRestrictScans_Wanted = 48028;       // "wanted column not present in input"
inline constexpr int VQLExpandMacros_Recursive = 48029;
inline constexpr int VQLFunctionTable_Resolve_Ambiguous = 48030;
inline constexpr int VQLFunctionTable_ResolveCaseType = 48031;
inline constexpr int VQLFunctionTable_Resolve_None = 48032;

inline constexpr int VQLAggregateRewriter_CallOf = 48033;    // "measures must be funcalls"
inline constexpr int VQLAggregateRewriter_TooLarge = 48035;  // "query too large"
inline constexpr int VQLRewriteCountd_Unknown = 48036;       // "unknown measure"

inline constexpr int VQLColumn_GetProperty = 40555;  // "VQLColumn::GetProperty"

inline constexpr int VQLColumnMap_Map = 49007;
inline constexpr int VQLColumnMap_Remap = 49008;
inline constexpr int VQLExpressionChecker_Raise = 49009;
inline constexpr int VQLExpandMacros_Arguments = 49018;
inline constexpr int VQLExpandMacros_Unresolved = 49019;
inline constexpr int VQLExpandMacros_TooLarge = 49010;     // "query too large"
inline constexpr int VQLRewriteQuantiles_Literal = 49011;  // "quantile needs a number as its second argument"
inline constexpr int VQLExpressionParser_Raise = 49020;
inline constexpr int VQLExpressionParser_Single = 49021;
inline constexpr int VQLMarkOrderedAggregates_GroupBy = 49033;  // "group-bys should be trivial at this point"
inline constexpr int VQLQueryChecker_RaiseExpression = 49035;   // a fault of an expression
inline constexpr int VQLQueryChecker_RaiseQuery = 49036;        // a fault of a query
inline constexpr int VQLQueryChecker_RaiseName = 49037;         // a fault that names something
inline constexpr int VQLQueryParser_Raise = 49039;
inline constexpr int VQLQueryParser_Single = 49040;

}  // namespace qve::status
