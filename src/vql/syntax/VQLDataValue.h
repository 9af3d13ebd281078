#pragma once

#include <string>
#include <variant>

#include "vql/syntax/VQLDataType.h"
#include "vql/syntax/VQLDatetime.h"

namespace qve {

/// The value of a literal: a type, and either null or a value of that type.
class VQLDataValue {
public:
    /// A null of unknown type.
    VQLDataValue() = default;
    explicit VQLDataValue(int value) : VQLDataValue(static_cast<long long>(value)) {}
    explicit VQLDataValue(long long value) : m_type(VQLDataType::integer), m_value(value) {}
    explicit VQLDataValue(double value) : m_type(VQLDataType::double_), m_value(value) {}
    explicit VQLDataValue(bool value) : m_type(VQLDataType::boolean), m_value(value) {}
    explicit VQLDataValue(VQLDate value) : m_type(VQLDataType::date), m_value(value) {}
    explicit VQLDataValue(VQLDatetime value) : m_type(VQLDataType::datetime), m_value(value) {}
    explicit VQLDataValue(VQLDuration value) : m_type(VQLDataType::duration), m_value(value) {}
    explicit VQLDataValue(std::wstring value) : m_type(VQLDataType::string), m_value(std::move(value)) {}
    explicit VQLDataValue(const wchar_t* value) : VQLDataValue(std::wstring(value)) {}

    static VQLDataValue Null(VQLDataType type);
    /// Makes this a null of `type`.
    void MakeNull(VQLDataType type);

    VQLDataType GetType() const { return m_type; }
    bool IsNull() const { return m_value.index() == 0; }

    /// Each getter throws VQLException 48022 "datatype error" for a value of another type, and for a null.
    long long GetInteger() const { return Get<long long>(); }
    double GetDouble() const { return Get<double>(); }
    bool GetBoolean() const { return Get<bool>(); }
    const VQLDate& GetDate() const { return Get<VQLDate>(); }
    const VQLDatetime& GetDatetime() const { return Get<VQLDatetime>(); }
    const VQLDuration& GetDuration() const { return Get<VQLDuration>(); }
    const std::wstring& GetString() const { return Get<std::wstring>(); }

    void SetInteger(long long value) { *this = VQLDataValue(value); }
    void SetDouble(double value) { *this = VQLDataValue(value); }
    void SetBoolean(bool value) { *this = VQLDataValue(value); }
    void SetDate(VQLDate value) { *this = VQLDataValue(value); }
    void SetDatetime(VQLDatetime value) { *this = VQLDataValue(value); }
    void SetDuration(VQLDuration value) { *this = VQLDataValue(value); }
    void SetString(std::wstring value) { *this = VQLDataValue(std::move(value)); }

private:
    template <class T>
    const T& Get() const;

    using Value =
        std::variant<std::monostate, long long, double, bool, VQLDate, VQLDatetime, VQLDuration, std::wstring>;

    VQLDataType m_type = VQLDataType::unknown;
    Value m_value;  // monostate: null
};

/// -1, 0 or 1: by type first, then nulls before values, then by value. Throws VQLException "invalid datatype" for
/// values of a type that has no order.
int cmp(const VQLDataValue& a, const VQLDataValue& b);
bool operator==(const VQLDataValue& a, const VQLDataValue& b);
bool operator<(const VQLDataValue& a, const VQLDataValue& b);

}  // namespace qve
