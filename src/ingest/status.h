#pragma once

/// Error numbers of imports and inserts.
namespace qve::status {

inline constexpr int BinaryScan_Next = 40034;
inline constexpr int BinaryScan_MakeInserter = 40035;
inline constexpr int InsertRows_column = 40036;
inline constexpr int InsertRows_text = 40037;
inline constexpr int TextScan_NoLines = 40561;
inline constexpr int TextScan_NoRows = 40562;
inline constexpr int TextScan_OpenFile = 40563;
inline constexpr int TextScan_Type = 40564;
inline constexpr int TextScan_TooManyColumns = 40565;
inline constexpr int TranscodingDataStream_Charset = 40566;
inline constexpr int TranscodingDataStream_Converter = 40567;
inline constexpr int TextDataStream_ReadOnly = 40568;
inline constexpr int DecompressingDataStream_Truncated = 40569;
inline constexpr int DecompressingDataStream_Corrupt = 40572;
inline constexpr int ICUDateParser_Allocate = 40573;
inline constexpr int ICUDateParser_CreateYear = 40574;
inline constexpr int ICUDateParser_SetYear = 40575;
inline constexpr int ICUDateParser_Reset = 40576;
inline constexpr int RepeatingTextDataStream_Header = 40577;
inline constexpr int RepeatingTextDataStream_Body = 40578;

}  // namespace qve::status
