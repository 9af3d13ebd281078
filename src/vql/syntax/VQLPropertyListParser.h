#pragma once

#include "types/usrprops.h"
#include "vql/syntax/VQLNode.h"

namespace qve {

/// Reads a property list, ((key value) ...), in which keys and values are words or string literals. A repeated key
/// overwrites. Errors are VQLParseException with the code given, at the offending node.
usrprops ParseVQLPropertyList(const RefCntPtr<VQLNode>& node, int code);

}  // namespace qve
