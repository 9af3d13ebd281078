#pragma once

/// Error numbers of evaluation, compilation and session commands.
namespace qve::status {

inline constexpr int VQLQueryCompiler_JoinType = 40234;
inline constexpr int VQLQueryCompiler_TableName = 40544;
inline constexpr int VQLQueryCompiler_Database = 40545;
inline constexpr int VQLQueryCompiler_NotSupported = 40546;
inline constexpr int VQLQueryCompiler_Input = 40547;
inline constexpr int VQLSession_ExecErrorSymbol = 40548;
inline constexpr int VQLSession_ExecErrorCount = 40549;
inline constexpr int VQLSession_ConnectPath = 10000;

inline constexpr int VQLQueryEvaluator_BadInput = 48034;
inline constexpr int VQLSession_ConnectArguments = 48039;
inline constexpr int VQLSession_ConnectLiteral = 48040;
inline constexpr int VQLSession_ExecError = 48041;
inline constexpr int VQLSession_ExplainCommand = 48037;  // "only queries have plans"
inline constexpr int VQLSession_ExplainNeedsDatabase = 48038;
inline constexpr int VQLSession_PackageArguments = 48042;
inline constexpr int VQLSession_PackageLiteral = 48043;
inline constexpr int VQLSession_PackageString = 48044;
inline constexpr int VQLSession_PlanNeedsDatabase = 48046;
inline constexpr int VQLSession_ColumnDefinition = 48047;
inline constexpr int VQLSession_NeedsDatabase = 48048;

inline constexpr int VQLExpressionCompiler_NullLiteral = 49015;
inline constexpr int VQLExpressionCompiler_Literal = 49016;
inline constexpr int VQLExpressionCompiler_Call = 49017;

}  // namespace qve::status
