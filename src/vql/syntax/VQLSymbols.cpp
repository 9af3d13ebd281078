#include "vql/syntax/VQLSymbols.h"

namespace qve {

const std::wstring VQLSymbols::symSelect = L"select";
const std::wstring VQLSymbols::symTable = L"table";
const std::wstring VQLSymbols::symDomain = L"domain";
const std::wstring VQLSymbols::symProject = L"project";
const std::wstring VQLSymbols::symRestrict = L"restrict";
const std::wstring VQLSymbols::symExchange = L"exchange";
const std::wstring VQLSymbols::symPivot = L"pivot";
const std::wstring VQLSymbols::symAggregate = L"aggregate";
const std::wstring VQLSymbols::symOrder = L"order";
const std::wstring VQLSymbols::symTop = L"top";
const std::wstring VQLSymbols::symExchangeStart = L"exchangestart";
const std::wstring VQLSymbols::symExchangeStop = L"exchangestop";
const std::wstring VQLSymbols::symLookup = L"lookup";
const std::wstring VQLSymbols::symJoin = L"join";
const std::wstring VQLSymbols::symLeftJoin = L"leftjoin";
const std::wstring VQLSymbols::symRightJoin = L"rightjoin";
const std::wstring VQLSymbols::symFullJoin = L"fulljoin";
const std::wstring VQLSymbols::symText = L"text";
const std::wstring VQLSymbols::symTransform = L"transform";
const std::wstring VQLSymbols::symIndexTable = L"indextable";
const std::wstring VQLSymbols::symIndexJoin = L"indexjoin";
const std::wstring VQLSymbols::symAppend = L"append";
const std::wstring VQLSymbols::symRemoteQuery = L"remotequery";
const std::wstring VQLSymbols::symAsc = L"asc";
const std::wstring VQLSymbols::symDesc = L"desc";
const std::wstring VQLSymbols::symNull = L"null";
const std::wstring VQLSymbols::symIsLookup = L"islookup";
const std::wstring VQLSymbols::symIND = L"isnotdistinct";
const std::wstring VQLSymbols::symCase = L"case";

}  // namespace qve
