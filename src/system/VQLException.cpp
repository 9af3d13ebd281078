#include "system/VQLException.h"

#include "system/unicode.h"

namespace qve {

VQLException::VQLException(int code, std::wstring message)
    : m_code(code), m_message(std::move(message)), m_narrow(narrow(m_message)) {}

}  // namespace qve
