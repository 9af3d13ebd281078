#include "vql/syntax/VQLDataValue.h"

#include "system/VQLException.h"
#include "vql/syntax/status.h"

namespace qve {

VQLDataValue VQLDataValue::Null(VQLDataType type) {
    VQLDataValue value;
    value.m_type = type;
    return value;
}

void VQLDataValue::MakeNull(VQLDataType type) {
    *this = Null(type);
}

template <class T>
const T& VQLDataValue::Get() const {
    const T* value = std::get_if<T>(&m_value);
    if (!value) throw VQLException(status::VQLDataValue_Get, L"datatype error");
    return *value;
}

template const long long& VQLDataValue::Get<long long>() const;
template const double& VQLDataValue::Get<double>() const;
template const bool& VQLDataValue::Get<bool>() const;
template const VQLDate& VQLDataValue::Get<VQLDate>() const;
template const VQLDatetime& VQLDataValue::Get<VQLDatetime>() const;
template const VQLDuration& VQLDataValue::Get<VQLDuration>() const;
template const std::wstring& VQLDataValue::Get<std::wstring>() const;

namespace {

template <class T>
int ThreeWay(const T& a, const T& b) {
    return a < b ? -1 : b < a ? 1 : 0;
}

}  // namespace

int cmp(const VQLDataValue& a, const VQLDataValue& b) {
    if (const int byType = ThreeWay(a.GetType(), b.GetType())) return byType;
    if (a.IsNull() || b.IsNull()) return static_cast<int>(b.IsNull()) - static_cast<int>(a.IsNull());
    switch (a.GetType()) {
        case VQLDataType::integer:
            return ThreeWay(a.GetInteger(), b.GetInteger());
        case VQLDataType::double_:
            return ThreeWay(a.GetDouble(), b.GetDouble());
        case VQLDataType::boolean:
            return ThreeWay(a.GetBoolean(), b.GetBoolean());
        case VQLDataType::string:
            return ThreeWay(a.GetString(), b.GetString());
        case VQLDataType::date:
            return a.GetDate().cmp(b.GetDate());
        case VQLDataType::datetime:
            return a.GetDatetime().cmp(b.GetDatetime());
        case VQLDataType::duration:
            return a.GetDuration().cmp(b.GetDuration());
        case VQLDataType::unknown:
        case VQLDataType::spatial:
            break;
    }
    throw VQLException(status::VQLDataValue_cmp, L"invalid datatype");
}

bool operator==(const VQLDataValue& a, const VQLDataValue& b) {
    return cmp(a, b) == 0;
}
bool operator<(const VQLDataValue& a, const VQLDataValue& b) {
    return cmp(a, b) < 0;
}

}  // namespace qve
