#pragma once

#include <cstdint>
#include <string>

#include "server/protocol/QVE_InterredValue.h"
#include "types/usrprops.h"

namespace qve::Server {

/// What a client is told of a column: "name", "type", and those of its properties that are for clients, in the order of
/// their names, with the text or number in each. A number that cannot be parsed is 0.
QVE_PropertyList ExportColumnProperties(const std::wstring& name, std::uint32_t datatype, const usrprops& properties);

}  // namespace qve::Server
