#pragma once

#include <initializer_list>
#include <iosfwd>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "types/usrpropkey.h"

namespace qve {

/// A property set: the one carrier of metadata. All values are text, numbers and booleans too, and are parsed where
/// they are used; a boolean is "true" or "false". A value type; one thread at a time.
class usrprops : public std::unordered_map<usrpropkey, std::wstring> {
public:
    using std::unordered_map<usrpropkey, std::wstring>::unordered_map;

    bool has(usrpropkey key) const { return find(key) != end(); }
    /// The text of `key`, or null when it is absent. Valid until the set changes.
    const std::wstring* get(usrpropkey key) const {
        const auto found = find(key);
        return found == end() ? nullptr : &found->second;
    }
    /// The text of `key`, or `absent`. The view is valid until the set changes.
    std::wstring_view text(usrpropkey key, std::wstring_view absent = {}) const {
        const std::wstring* value = get(key);
        return value ? std::wstring_view(*value) : absent;
    }
    /// True when the text of `key` is "true".
    bool is_true(usrpropkey key) const { return text(key) == L"true"; }
    /// The decimal digits at the start of the text of `key`, behind blanks and control characters; `absent` when the
    /// key is absent. No digits are 0, and a number beyond 64 bits is the greatest there is.
    unsigned long long number(usrpropkey key, unsigned long long absent = 0) const;

    void set(usrpropkey key, std::wstring_view value) { insert_or_assign(key, std::wstring(value)); }
    void set(usrpropkey key, const wchar_t* value) { insert_or_assign(key, std::wstring(value)); }
    void set(usrpropkey key, bool value) { insert_or_assign(key, value ? L"true" : L"false"); }
    void set(usrpropkey key, unsigned long long value) { insert_or_assign(key, std::to_wstring(value)); }
    void set(usrpropkey key, unsigned long value) { insert_or_assign(key, std::to_wstring(value)); }
    void set(usrpropkey key, unsigned value) { insert_or_assign(key, std::to_wstring(value)); }
    void set(usrpropkey key, int value) { insert_or_assign(key, std::to_wstring(value)); }
};

/// The entries of `right` overwrite or extend those of `left`.
usrprops& operator+=(usrprops& left, const usrprops& right);

/// The set as pairs of key and value, sorted by the key's text in wide-character order.
std::vector<std::pair<usrpropkey, std::wstring>> OrderedUserProperties(const usrprops& properties);

/// Prints the ordered set one entry to a line: key, ":", value, newline. This is the form of a property file.
std::wostream& operator<<(std::wostream& stream, const usrprops& properties);

}  // namespace qve
