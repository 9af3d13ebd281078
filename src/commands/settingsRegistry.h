#pragma once

#include <functional>
#include <span>
#include <string>
#include <string_view>

#include "vql/syntax/VQLDataValue.h"

namespace qve {

/// A process-wide setting and its accesses; an empty one is an access that the setting does not have. Any thread may
/// call them.
struct Setting {
    std::wstring_view name;
    std::function<void(const std::wstring&)> setString = {};
    std::function<void(bool)> setBoolean = {};
    std::function<void(unsigned)> setUnsigned = {};
    std::function<std::wstring()> getString = {};
    std::function<bool()> getBoolean = {};
    std::function<unsigned()> getUnsigned = {};

    /// What the getter gives, as text; "<no getter defined>" without one.
    std::wstring GetText() const;
    /// Takes a literal of the setter's type: "Expected boolean value", "Expected unsigned integer value", "Expected
    /// string value", "Setting is read-only" as QVE_RuntimeError (40609), and what the setter throws.
    void Set(const VQLDataValue& value) const;
};

/// All settings, in the order in which they are shown.
std::span<const Setting> settingsRegistry();
/// Throws QVE_RuntimeError (40608) "Setting not found".
const Setting& FindSetting(std::wstring_view name);

}  // namespace qve
