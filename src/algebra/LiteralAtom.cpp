#include "algebra/LiteralAtom.h"

#include <cmath>

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

VQLDataValue LiteralOfAtom(const usratom& atom) {
    if (!atom.type()) return {};
    const auto civil = [](const date& day) {
        const calendar::civil_date parts = day.civil();
        return VQLDate{static_cast<short>(parts.year), static_cast<char>(parts.month), static_cast<char>(parts.day)};
    };
    switch (atom.isnull() ? DataType::spatial : atom.type()->GetDataType()) {
        case DataType::boolean:
            return VQLDataValue(static_cast<bit>(atom).value != 0);
        case DataType::index:
        case DataType::integer:
            return VQLDataValue(static_cast<long long>(atom));
        case DataType::real:
            return std::isnan(static_cast<double>(atom)) ? VQLDataValue() : VQLDataValue(static_cast<double>(atom));
        case DataType::date:
            return VQLDataValue(civil(static_cast<date>(atom)));
        case DataType::datetime: {
            const auto moment = static_cast<datetime>(atom);
            const VQLDate day = civil(moment.day());
            const unsigned ticks = moment.ticks();
            const unsigned seconds = ticks / ticks_per_second;
            return VQLDataValue(VQLDatetime{day.year, day.month, day.day, static_cast<char>(seconds / 3600),
                                            static_cast<char>(seconds / 60 % 60), static_cast<char>(seconds % 60),
                                            static_cast<short>(ticks % ticks_per_second)});
        }
        case DataType::duration: {
            const long long ticks = static_cast<duration>(atom).value;
            const long long seconds = ticks / ticks_per_second;
            VQLDuration span;
            span.day = static_cast<decltype(span.day)>(ticks / ticks_per_day);
            span.hour = static_cast<decltype(span.hour)>(seconds / 3600 % 24);
            span.minute = static_cast<decltype(span.minute)>(seconds / 60 % 60);
            span.second = static_cast<decltype(span.second)>(seconds % 60);
            span.fraction = static_cast<decltype(span.fraction)>(ticks % ticks_per_second);
            return VQLDataValue(span);
        }
        case DataType::usr: {
            usratom text;
            varchar::usrtypeof(varchar::clob_precision, 1, nullptr)->cast(text, atom);
            return VQLDataValue(widen(text.bytes()));
        }
        case DataType::spatial:
            return {};
    }
    return {};
}

}  // namespace qve
