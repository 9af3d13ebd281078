#include "types/usratom.h"

#include <utility>

#include "types/builtin.h"
#include "types/scalartype.h"

namespace qve {
namespace {

template <class T>
T converted(const usratom& atom) {
    usratom result;
    builtin::usrtypeof<T>()->cast(result, atom);
    return scalartype<T>::value(result);
}

}  // namespace

usratom::usratom(const usrtype* type, const char* data, uint64_t length, bool borrow) {
    assign(type, data, length, borrow);
}

usratom::usratom(const usratom& other) : m_type(other.m_type), m_length(other.m_length), m_bytes(other.m_bytes) {
    adopt(other.m_data, other.owns());
}

usratom::usratom(usratom&& other) noexcept : m_type(other.m_type), m_length(other.m_length) {
    const bool owned = other.owns();
    m_bytes = std::move(other.m_bytes);
    adopt(other.m_data, owned);
    other.assign_null(other.m_type);
}

usratom& usratom::operator=(const usratom& other) {
    if (this == &other) return *this;
    m_type = other.m_type;
    m_length = other.m_length;
    const bool owned = other.owns();
    if (owned) m_bytes = other.m_bytes;
    adopt(other.m_data, owned);
    return *this;
}

usratom& usratom::operator=(usratom&& other) noexcept {
    if (this == &other) return *this;
    m_type = other.m_type;
    m_length = other.m_length;
    const bool owned = other.owns();
    // The buffers change hands, so that loops which move atoms about allocate nothing.
    m_bytes.swap(other.m_bytes);
    adopt(other.m_data, owned);
    other.assign_null(other.m_type);
    return *this;
}

void usratom::adopt(const char* data, bool owned) {
    if (!owned) {
        m_data = data;
    } else {
        m_data = m_length ? m_bytes.data() : reinterpret_cast<const char*>(this);
    }
}

usratom::usratom(bit value) : usratom(builtin::usrtypeof<bit>(), reinterpret_cast<const char*>(&value), sizeof value) {}
usratom::usratom(char value) : usratom(builtin::usrtypeof<char>(), &value, sizeof value) {}
usratom::usratom(short value)
    : usratom(builtin::usrtypeof<short>(), reinterpret_cast<const char*>(&value), sizeof value) {}
usratom::usratom(int value) : usratom(builtin::usrtypeof<int>(), reinterpret_cast<const char*>(&value), sizeof value) {}
usratom::usratom(long long value)
    : usratom(builtin::usrtypeof<long long>(), reinterpret_cast<const char*>(&value), sizeof value) {}
usratom::usratom(float value)
    : usratom(builtin::usrtypeof<float>(), reinterpret_cast<const char*>(&value), sizeof value) {}
usratom::usratom(double value)
    : usratom(builtin::usrtypeof<double>(), reinterpret_cast<const char*>(&value), sizeof value) {}
usratom::usratom(date value)
    : usratom(builtin::usrtypeof<date>(), reinterpret_cast<const char*>(&value), sizeof value) {}
usratom::usratom(datetime value)
    : usratom(builtin::usrtypeof<datetime>(), reinterpret_cast<const char*>(&value), sizeof value) {}
usratom::usratom(duration value)
    : usratom(builtin::usrtypeof<duration>(), reinterpret_cast<const char*>(&value), sizeof value) {}

void usratom::assign(const usrtype* type, const char* data, uint64_t length, bool borrow) {
    m_type = type;
    m_length = data ? length : 0;
    if (!data) {
        m_data = nullptr;
    } else if (length == 0) {
        m_data = reinterpret_cast<const char*>(this);
    } else if (borrow) {
        m_data = data;
    } else {
        // The bytes may lie in our own buffer, which std::vector::assign does not allow.
        if (data >= m_bytes.data() && data < m_bytes.data() + m_bytes.size()) {
            std::vector<char>(data, data + length).swap(m_bytes);
        } else {
            m_bytes.assign(data, data + length);
        }
        m_data = m_bytes.data();
    }
}

void usratom::assign_null(const usrtype* type) {
    m_type = type;
    m_data = nullptr;
    m_length = 0;
}

void usratom::swap(const usrtype* type, std::vector<char>& buffer) {
    m_bytes.swap(buffer);
    m_type = type;
    m_length = m_bytes.size();
    m_data = m_length ? m_bytes.data() : reinterpret_cast<const char*>(this);
}

bool usratom::isnull() const {
    if (!m_data) return true;
    if (!m_type) return false;
    const std::string_view null = m_type->null_bytes();
    return !null.empty() && bytes() == null;
}

usratom::operator bit() const {
    return converted<bit>(*this);
}
usratom::operator char() const {
    return converted<char>(*this);
}
usratom::operator short() const {
    return converted<short>(*this);
}
usratom::operator int() const {
    return converted<int>(*this);
}
usratom::operator long long() const {
    return converted<long long>(*this);
}
usratom::operator float() const {
    return converted<float>(*this);
}
usratom::operator double() const {
    return converted<double>(*this);
}
usratom::operator date() const {
    return converted<date>(*this);
}
usratom::operator datetime() const {
    return converted<datetime>(*this);
}
usratom::operator duration() const {
    return converted<duration>(*this);
}

}  // namespace qve
