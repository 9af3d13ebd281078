#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "server/protocol/QVE_Value.h"

namespace qve {

/// A value that owns its payload.
class QVE_InterredValue {
public:
    /// NULL of no type.
    QVE_InterredValue() = default;
    /// Copies the payload.
    explicit QVE_InterredValue(const QVE_Value& value);
    /// Text in UTF-16.
    explicit QVE_InterredValue(std::wstring_view text);
    /// Text in 8-bit bytes.
    explicit QVE_InterredValue(std::string_view text);
    explicit QVE_InterredValue(const wchar_t* text) : QVE_InterredValue(std::wstring_view(text)) {}
    explicit QVE_InterredValue(const char* text) : QVE_InterredValue(std::string_view(text)) {}
    explicit QVE_InterredValue(bool value);
    explicit QVE_InterredValue(std::int8_t value);
    explicit QVE_InterredValue(std::uint8_t value);
    explicit QVE_InterredValue(std::int16_t value);
    explicit QVE_InterredValue(std::uint16_t value);
    explicit QVE_InterredValue(std::int32_t value);
    explicit QVE_InterredValue(std::uint32_t value);
    explicit QVE_InterredValue(std::int64_t value);
    explicit QVE_InterredValue(std::uint64_t value);
    explicit QVE_InterredValue(float value);
    explicit QVE_InterredValue(double value);

    /// A view that is good as long as this object is unchanged. The view of an empty payload has a pointer, too: only
    /// NULL has none.
    QVE_Value GetValue() const noexcept;

    /// The text of a text value (types 15 and 16), empty for every other.
    std::wstring GetText() const;

private:
    QVE_InterredValue(std::uint32_t type, const void* payload, std::size_t size);

    std::uint32_t m_type = QVE_Value::s_null;
    std::vector<std::uint8_t> m_bytes;
};

/// Keys and values, in the order of the wire.
using QVE_PropertyList = std::vector<std::pair<QVE_InterredValue, QVE_InterredValue>>;

}  // namespace qve
