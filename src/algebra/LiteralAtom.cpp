#include "algebra/LiteralAtom.h"

#include "system/unicode.h"
#include "types/builtin.h"
#include "types/datetime.h"
#include "types/varchar.h"
#include "vql/syntax/VQLDataType.h"
#include "vql/syntax/VQLDataValue.h"
#include "vql/syntax/VQLDatetime.h"

namespace qve {
namespace {

const wchar_t* Collation(const usrprops& properties) {
    const std::wstring* collation = properties.get(usrpropkey::collation);
    return collation ? collation->c_str() : nullptr;
}

constexpr long long TimeTicks(int hour, int minute, int second, int fraction) {
    return ((hour * 60LL + minute) * 60 + second) * 10000 + fraction;
}
date ToDate(const VQLDate& d) {
    return date::gregoriandate(d.year, d.month, d.day);
}
datetime ToDatetime(const VQLDatetime& t) {
    return datetime::at(date::gregoriandate(t.year, t.month, t.day),
                        static_cast<unsigned long long>(TimeTicks(t.hour, t.minute, t.second, t.fraction)));
}
duration ToDuration(const VQLDuration& u) {
    return {u.day * static_cast<long long>(ticks_per_day) + TimeTicks(u.hour, u.minute, u.second, u.fraction)};
}

}  // namespace

const usrtype* TypeOfDataType(VQLDataType type, const usrprops& properties) {
    switch (type) {
        case VQLDataType::integer:
            return builtin::usrtypeof<long long>();
        case VQLDataType::double_:
            return builtin::usrtypeof<double>();
        case VQLDataType::boolean:
            return builtin::usrtypeof<bit>();
        case VQLDataType::string:
            return varchar::usrtypeof(varchar::clob_precision, 1, Collation(properties));
        case VQLDataType::date:
            return builtin::usrtypeof<date>();
        case VQLDataType::datetime:
            return builtin::usrtypeof<datetime>();
        case VQLDataType::duration:
            return builtin::usrtypeof<duration>();
        default:
            return nullptr;
    }
}

usratom AtomOfLiteral(const VQLDataValue& literal, const usrprops& properties) {
    if (literal.IsNull()) {
        const usrtype* type = TypeOfDataType(literal.GetType(), properties);
        return type ? type->null() : usratom();
    }
    switch (literal.GetType()) {
        case VQLDataType::integer:
            return usratom(literal.GetInteger());
        case VQLDataType::double_:
            return usratom(literal.GetDouble());
        case VQLDataType::boolean:
            return usratom(bit{literal.GetBoolean()});
        case VQLDataType::date:
            return usratom(ToDate(literal.GetDate()));
        case VQLDataType::datetime:
            return usratom(ToDatetime(literal.GetDatetime()));
        case VQLDataType::duration:
            return usratom(ToDuration(literal.GetDuration()));
        case VQLDataType::string: {
            const std::wstring& text = literal.GetString();
            const std::string bytes = narrow(text);
            const size_t precision = text.empty() ? 1 : text.size();
            return usratom(varchar::usrtypeof(precision, 1, Collation(properties)), bytes.data(), bytes.size());
        }
        default:
            return usratom();
    }
}

}  // namespace qve
