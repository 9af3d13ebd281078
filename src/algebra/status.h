#pragma once

namespace qve::status {

inline constexpr int Aggr_source = 40012;
inline constexpr int Aggr_ComputeGrouping = 40013;
inline constexpr int Aggr_GetColumn = 40014;
inline constexpr int Aggr_DescribeColumn = 40015;
inline constexpr int Aggr_InsertRows = 40016;
inline constexpr int Aggr_ProcessData = 40017;
inline constexpr int BooleanExp_MakeColumn = 40048;
inline constexpr int CaseExp_MakeColumn = 40050;
inline constexpr int CastExp_AllocateColumn = 40053;
inline constexpr int CellCopier_Append = 40056;
inline constexpr int CountdExp_MakePrimitiveColumn = 40357;
inline constexpr int DataFlow_DescribeColumn = 40101;
inline constexpr int DataFlow_GetColumn = 40102;
inline constexpr int DataFlow_LoadColumn = 40103;
inline constexpr int DataFlow_LookupColumn = 40104;
inline constexpr int DataFlow_ResetCursor = 40105;
inline constexpr int Exp_Aggregate = 40158;
inline constexpr int ExpVisitorImpl_Absent = 40161;
inline constexpr int FlowTable_DescribeColumn = 40180;
inline constexpr int FlowTable_source = 40181;
inline constexpr int FlowTable_GetColumn = 40182;
inline constexpr int FlowTable_LoadColumn = 40183;
inline constexpr int FlowTable_LookupColumn = 40184;
inline constexpr int HashGrouping_AdoptGroups = 40209;
inline constexpr int HashGrouping_ResolveUserCheck = 40210;
inline constexpr int Join_CastColumn = 40225;
inline constexpr int Join_ChooseGrouping = 40228;
inline constexpr int Join_SetGrouping = 40229;
inline constexpr int Grouping_HashInner = 40231;
inline constexpr int LeafTable_DescribeColumn = 40239;
inline constexpr int LeafTable_GetColumn = 40240;
inline constexpr int MomentsExp_MakePrimitiveColumn = 40358;
inline constexpr int OrdAggr_LookupColumn = 40303;
inline constexpr int OrdAggr_LoadCheckers = 40304;
inline constexpr int Order_DescribeColumn = 40300;
inline constexpr int Order_GetColumn = 40301;
inline constexpr int Order_source = 40302;
inline constexpr int PrimitiveExp_MakePrimitive = 40354;
inline constexpr int PrimitiveExp_MakePrimitiveColumn = 40355;
inline constexpr int QuantileExp_MakePrimitiveColumn = 40356;
inline constexpr int RestrictedTable_DescribeColumn = 40379;
inline constexpr int RestrictedTable_GetColumn = 40380;
inline constexpr int Renamespace_DescribeColumn = 40385;
inline constexpr int Renamespace_GetColumn = 40386;
inline constexpr int ResolveCast = 40390;
inline constexpr int Scan_Next = 40401;
inline constexpr int Select_Select = 40403;
inline constexpr int SelectExp_Evaluate = 40409;
inline constexpr int TableSorter_table = 40556;
inline constexpr int TableSorter_Rows = 40557;
inline constexpr int TableSorter_ResolveSort = 40558;
inline constexpr int TableSorter_RankHides = 40559;
inline constexpr int TableSorter_RankTwice = 40560;
inline constexpr int TopN_DescribeColumn = 40570;
inline constexpr int TopN_GetColumn = 40571;
inline constexpr int WholeColumn_Short = 40580;

}  // namespace qve::status
