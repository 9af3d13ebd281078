#include "server/protocol/QVE_InterredValue.h"

#include <cstring>

#include "system/unicode.h"

namespace qve {

QVE_InterredValue::QVE_InterredValue(std::uint32_t type, const void* payload, std::size_t size) : m_type(type) {
    const auto* bytes = static_cast<const std::uint8_t*>(payload);
    if (size != 0) m_bytes.assign(bytes, bytes + size);
}

QVE_InterredValue::QVE_InterredValue(const QVE_Value& value)
    : QVE_InterredValue(value.type, value.data, value.IsNull() ? 0 : value.size) {}

QVE_InterredValue::QVE_InterredValue(std::wstring_view text) : m_type(QVE_TypeText16) {
    const std::u16string units = to_utf16(text);
    m_bytes.resize(units.size() * sizeof(char16_t));
    if (!units.empty()) std::memcpy(m_bytes.data(), units.data(), m_bytes.size());
}

QVE_InterredValue::QVE_InterredValue(std::string_view text)
    : QVE_InterredValue(QVE_TypeText8, text.data(), text.size()) {}

QVE_InterredValue::QVE_InterredValue(bool value) : m_type(QVE_TypeBit), m_bytes{std::uint8_t{value}} {}
QVE_InterredValue::QVE_InterredValue(std::int8_t value) : QVE_InterredValue(QVE_TypeInt8, &value, sizeof(value)) {}
QVE_InterredValue::QVE_InterredValue(std::uint8_t value) : QVE_InterredValue(QVE_TypeUInt8, &value, sizeof(value)) {}
QVE_InterredValue::QVE_InterredValue(std::int16_t value) : QVE_InterredValue(QVE_TypeInt16, &value, sizeof(value)) {}
QVE_InterredValue::QVE_InterredValue(std::uint16_t value) : QVE_InterredValue(QVE_TypeUInt16, &value, sizeof(value)) {}
QVE_InterredValue::QVE_InterredValue(std::int32_t value) : QVE_InterredValue(QVE_TypeInt32, &value, sizeof(value)) {}
QVE_InterredValue::QVE_InterredValue(std::uint32_t value) : QVE_InterredValue(QVE_TypeUInt32, &value, sizeof(value)) {}
QVE_InterredValue::QVE_InterredValue(std::int64_t value) : QVE_InterredValue(QVE_TypeInt64, &value, sizeof(value)) {}
QVE_InterredValue::QVE_InterredValue(std::uint64_t value) : QVE_InterredValue(QVE_TypeUInt64, &value, sizeof(value)) {}
QVE_InterredValue::QVE_InterredValue(float value) : QVE_InterredValue(QVE_TypeFloat, &value, sizeof(value)) {}
QVE_InterredValue::QVE_InterredValue(double value) : QVE_InterredValue(QVE_TypeDouble, &value, sizeof(value)) {}

QVE_Value QVE_InterredValue::GetValue() const noexcept {
    if (m_type & QVE_Value::s_null) return {m_type, 0, nullptr};
    const void* payload = m_bytes.empty() ? static_cast<const void*>(&m_type) : m_bytes.data();
    return {m_type, static_cast<std::uint32_t>(m_bytes.size()), payload};
}

std::wstring QVE_InterredValue::GetText() const {
    if (m_type == QVE_TypeText8) {
        return widen(std::string_view(reinterpret_cast<const char*>(m_bytes.data()), m_bytes.size()));
    }
    if (m_type != QVE_TypeText16) return {};
    std::u16string units(m_bytes.size() / sizeof(char16_t), u'\0');
    if (!units.empty()) std::memcpy(units.data(), m_bytes.data(), units.size() * sizeof(char16_t));
    return widen(units);
}

}  // namespace qve
