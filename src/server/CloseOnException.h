#pragma once

#include <string>

namespace qve::Server {

/// Logs why a connection ends: the exception that is being handled.
void CloseOnException(const std::string& description) noexcept;

}  // namespace qve::Server
