#pragma once

/// Status numbers of the server front end. Clients match on them: never reuse, never renumber.
namespace qve::status {

inline constexpr int Server_NonStandardException = 40135;
inline constexpr int Server_TempDirectory = 40579;
inline constexpr int Connection_InvalidSession = 40412;
inline constexpr int Connection_Send_Short = 40413;
inline constexpr int Connection_Send_Magic = 40414;
inline constexpr int GetDatatype_Datatype = 40416;
inline constexpr int GetDatatype_Builtin = 40417;
inline constexpr int SessionPool_GetSession = 40421;
inline constexpr int SessionPool_AddSession = 40422;
inline constexpr int Session_Dispatch = 40423;
inline constexpr int Session_GetStatement = 40427;
inline constexpr int Session_GetRowset = 40428;
inline constexpr int Session_GetInsert = 40429;
inline constexpr int Server_StandardException = 40430;
inline constexpr int Insert_schema = 40265;
inline constexpr int Insert_table = 40266;
inline constexpr int Insert_column = 40267;
inline constexpr int Insert_committed = 40268;
inline constexpr int Session_InsertOpen = 40269;
inline constexpr int Session_NotSupported = 40432;
inline constexpr int Session_StatementExecute = 40433;
inline constexpr int Session_StatementClose = 40434;
inline constexpr int Session_StatementPrepare = 40435;
inline constexpr int Session_StatementPlan = 40425;
inline constexpr int Session_StatementCancel = 40440;
inline constexpr int Session_StatementEstimateProgress = 40424;
inline constexpr int Session_GetUpload = 40408;
inline constexpr int Session_GetDownload = 40410;
inline constexpr int Upload_Commit = 40436;
inline constexpr int Upload_size = 40437;
inline constexpr int Upload_Send = 40438;
inline constexpr int Upload_SetSize = 40439;
inline constexpr int Upload_create = 40419;
inline constexpr int Upload_exists = 40420;
inline constexpr int Download_Recv = 40415;
inline constexpr int Rowset_GetColumn = 40695;
/// Operator::CancelledException, which carries no number itself.
inline constexpr int Server_Cancelled = 50000;

}  // namespace qve::status
