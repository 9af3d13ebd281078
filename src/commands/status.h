#pragma once

namespace qve::status {

inline constexpr int Statement_GetColumn = 40600;
inline constexpr int Statement_DescribeColumn = 40601;
inline constexpr int DropDatabase_file = 40602;
inline constexpr int CreateTableFromFlow_exists = 40603;
inline constexpr int CreateTableFromFlow_plan = 40604;
inline constexpr int ShowFolder_path = 40605;
inline constexpr int ShowDatabases_path = 40606;
inline constexpr int SettingsCommand_action = 40607;
inline constexpr int Setting_unknown = 40608;
inline constexpr int Setting_value = 40609;
inline constexpr int SettingsCommand_missing = 40610;

inline constexpr int CreateColumn_target = 40611;
inline constexpr int CreateColumn_count = 40612;
inline constexpr int CreateColumn_default = 40613;
inline constexpr int CreateColumn_plan = 40614;
inline constexpr int ValueGenerator = 40615;
inline constexpr int PivotTable_schema = 40616;
inline constexpr int PivotTable_table = 40617;
inline constexpr int PackageDatabase_simple = 40618;
inline constexpr int PackageDatabase_source = 40619;

}  // namespace qve::status
