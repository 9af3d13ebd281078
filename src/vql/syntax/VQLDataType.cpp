#include "vql/syntax/VQLDataType.h"

#include "types/usrtype.h"

namespace qve {

const std::wstring& FormatDataType(VQLDataType type) {
    static const std::wstring names[] = {L"unknown", L"integer", L"double",   L"boolean",
                                         L"string",  L"date",    L"datetime", L"duration"};
    static const std::wstring invalid = L"<invalid>";
    const auto i = static_cast<size_t>(type);
    return i < std::size(names) ? names[i] : invalid;
}

VQLDataType VQLDataTypeFromProps(const usrprops& props) {
    switch (usrtype::resolve(props)->GetDataType()) {
        case DataType::index:
        case DataType::integer:
            return VQLDataType::integer;
        case DataType::boolean:
            return VQLDataType::boolean;
        case DataType::real:
            return VQLDataType::double_;
        case DataType::date:
            return VQLDataType::date;
        case DataType::datetime:
            return VQLDataType::datetime;
        case DataType::duration:
            return VQLDataType::duration;
        case DataType::usr:
            return VQLDataType::string;
        case DataType::spatial:
            return VQLDataType::spatial;
    }
    return VQLDataType::unknown;
}

}  // namespace qve
