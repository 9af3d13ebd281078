#pragma once

namespace qve::status {

// Columns.
inline constexpr int Column_SetData = 40064;
inline constexpr int Column_SetData_copy = 40065;
inline constexpr int Column_GetDataColumn = 40066;
inline constexpr int Column_GetDictionaryColumn_plain = 40067;
inline constexpr int Column_GetDictionaryColumn_heap = 40068;
inline constexpr int Column_GetFrequencyColumn = 40069;
inline constexpr int Column_GetProperty = 40070;
inline constexpr int Column_MarkRange_order = 40071;
inline constexpr int Column_MarkRange_rows = 40072;
inline constexpr int Column_MarkRange_width = 40073;
inline constexpr int Column_Overlay = 40074;

// Table spaces and the objects above them.
inline constexpr int DatabaseSchema_DatabaseSchema = 40106;
inline constexpr int DatabaseTable_DatabaseTable = 40107;
inline constexpr int DirectoryTableSpace_create = 40134;
inline constexpr int MaterialisedTableSpace_GetTable = 40245;
inline constexpr int MaterialisedTableSpace_create = 40246;
inline constexpr int MaterialisedTableSpace_listdir = 40247;
inline constexpr int MaterialisedTableSpace_mkdir = 40248;
inline constexpr int MaterialisedTableSpace_open_writable = 40249;
inline constexpr int MaterialisedTableSpace_open_unknown = 40250;
inline constexpr int MaterialisedTableSpace_open_missing = 40251;
inline constexpr int MaterialisedTableSpace_rename = 40252;
inline constexpr int MaterialisedTableSpace_rmdir = 40253;
inline constexpr int MaterialisedTableSpace_root = 40254;
inline constexpr int MaterialisedTableSpace_unlink = 40255;
inline constexpr int MemoryDirectoryTableSpace_mkdir = 40697;
inline constexpr int MemoryDirectoryTableSpace_create = 40698;
inline constexpr int MemoryDirectoryTableSpace_open = 40699;

// The catalog.
inline constexpr int SimpleDatabase_version = 201;
inline constexpr int SimpleDatabase_AddTableSpace = 40445;
inline constexpr int SimpleDatabase_AllocateColumnFile_extension = 40446;
inline constexpr int SimpleDatabase_AllocateColumnFile_names = 40447;
inline constexpr int SimpleDatabase_CreateColumn = 40448;
inline constexpr int SimpleDatabase_CreateDatabase = 40449;
inline constexpr int SimpleDatabase_CreateSchema = 40450;
inline constexpr int SimpleDatabase_CreateTable = 40451;
inline constexpr int SimpleDatabase_DropDatabase = 40452;
inline constexpr int SimpleDatabase_DropDatabase_cascade = 40453;
inline constexpr int SimpleDatabase_DropSchema = 40454;
inline constexpr int SimpleDatabase_DropTable_directory = 40455;
inline constexpr int SimpleDatabase_GetColumnFiles = 40456;
inline constexpr int SimpleDatabase_InsertColumn = 40457;
inline constexpr int SimpleDatabase_RemoveTableSpace = 40458;
inline constexpr int SimpleDatabase_SelectColumnProperties = 40459;
inline constexpr int SimpleDatabase_SelectMetadataName = 40460;
inline constexpr int SimpleDatabase_InsertMetadata = 40461;
inline constexpr int SimpleDatabase_UpdateColumnProperties = 40462;
inline constexpr int SimpleDatabase_GetSchema = 40463;
inline constexpr int SimpleDatabase_SelectTable = 40464;
inline constexpr int SimpleDatabase_CreateColumn_exists = 40465;
inline constexpr int SimpleDatabase_LoadCatalog = 40466;
inline constexpr int SimpleDatabase_OpenColumn = 40467;
inline constexpr int SimpleDatabase_ReplaceColumn = 40468;
inline constexpr int SimpleDatabase_Transaction = 40469;
inline constexpr int SimpleDatabase_system = 40471;
inline constexpr int SimpleDatabase_CreateTable_name = 40472;
inline constexpr int ReadPropertyFile = 40473;
inline constexpr int CatalogJournal_path = 40475;
inline constexpr int DatabaseOwner_taken = 40474;
inline constexpr int DatabaseSchema_GetTable = 40444;

// Packages.
inline constexpr int PackageCreate_exists = 40090;
inline constexpr int PkgTableSpace_listdir = 40270;
inline constexpr int PkgTableSpace_open = 40271;
inline constexpr int ReadOnlyTableSpace_NotWritable = 40272;
inline constexpr int PackageExpand_exists = 40273;
inline constexpr int PackageOpen_name = 40274;
inline constexpr int PackageOpen_depth = 40275;
inline constexpr int PackageOpen_cut = 40276;
inline constexpr int PackageOpen_directoryRest = 40277;
inline constexpr int PackageOpen_fileRest = 40278;
inline constexpr int PackageOpen_data = 40279;
inline constexpr int PackageOpen_range = 40280;
inline constexpr int PackageOpen_type = 40281;
inline constexpr int PackageOpen_short = 40282;
inline constexpr int PackageOpen_magic = 40283;
inline constexpr int PackageOpen_version = 40284;

// The database family.
inline constexpr int DatabaseFamily_GetDatabase = 49000;
inline constexpr int DatabaseFamily_ResolveDatabasePath_relative = 49001;
inline constexpr int DatabaseFamily_ResolveDatabasePath_access = 49002;

// Encodings.
inline constexpr int AffineDataStream_Initialise = 40007;
inline constexpr int AffineDataStream_GetDeltaType = 40188;
inline constexpr int AffineDataStream_Header = 40001;
inline constexpr int AffineDataStream_Overflow = 40002;
inline constexpr int AffineDataStream_Seek = 40003;
inline constexpr int BlockDataStream_Header = 40059;
inline constexpr int BlockDataStream_Truncated = 40060;
inline constexpr int DeltaDataStream_FlushData = 40111;
inline constexpr int DeltaDataStream_Initialise_decoder = 40114;
inline constexpr int DeltaDataStream_Initialise_encoder = 40115;
inline constexpr int DeltaDataStream_Seek = 40116;
inline constexpr int DictionaryDataStream_Initialise = 40117;
inline constexpr int DictionaryDataStream_Overflow = 40118;
inline constexpr int DictionaryDataStream_Seek = 40119;
inline constexpr int EncodedDataStream_Append = 40139;
inline constexpr int EncodedDataStream_Extend = 40140;
inline constexpr int EncodedDataStream_GetInput = 40141;
inline constexpr int EncodedDataStream_GetOutput = 40142;
inline constexpr int EncodedDataStream_Resize = 40143;
inline constexpr int EncodingFactory_CreateEncodingStream = 40138;
inline constexpr int FORDataStream_FlushData = 40166;
inline constexpr int FORDataStream_Initialise_decoder = 40169;
inline constexpr int FORDataStream_Initialise_encoder = 40170;
inline constexpr int FORDataStream_Seek = 40171;
inline constexpr int FORDataStream_decode_functype_bits = 40172;
inline constexpr int OverflowDataStream_Append = 40293;
inline constexpr int RunLengthDataStream_Header = 40391;
inline constexpr int RunLengthDataStream_Append = 40392;
inline constexpr int RunLengthDataStream_Truncated = 40393;
inline constexpr int RunLengthDataStream_Resize = 40388;
inline constexpr int RunLengthDataStream_Seek = 40394;

}  // namespace qve::status
