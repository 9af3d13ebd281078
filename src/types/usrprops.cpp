#include "types/usrprops.h"

#include <algorithm>
#include <limits>
#include <ostream>

namespace qve {

unsigned long long usrprops::number(usrpropkey key, unsigned long long absent) const {
    const std::wstring* value = get(key);
    if (!value) return absent;
    constexpr auto greatest = std::numeric_limits<unsigned long long>::max();
    unsigned long long sum = 0;
    size_t i = 0;
    while (i < value->size() && (*value)[i] < 33) ++i;
    for (; i < value->size() && (*value)[i] >= L'0' && (*value)[i] <= L'9'; ++i) {
        const auto digit = static_cast<unsigned>((*value)[i] - L'0');
        if (sum > (greatest - digit) / 10) return greatest;
        sum = sum * 10 + digit;
    }
    return sum;
}

usrprops& operator+=(usrprops& left, const usrprops& right) {
    for (const auto& [key, value] : right) left.insert_or_assign(key, value);
    return left;
}

std::vector<std::pair<usrpropkey, std::wstring>> OrderedUserProperties(const usrprops& properties) {
    std::vector<std::pair<usrpropkey, std::wstring>> ordered(properties.begin(), properties.end());
    std::sort(ordered.begin(), ordered.end(),
              [](const auto& a, const auto& b) { return UsrPropKey_ToString(a.first) < UsrPropKey_ToString(b.first); });
    return ordered;
}

std::wostream& operator<<(std::wostream& stream, const usrprops& properties) {
    for (const auto& [key, value] : OrderedUserProperties(properties)) stream << key << L':' << value << L'\n';
    return stream;
}

}  // namespace qve
