#pragma once

#include <cstddef>
#include <iosfwd>

namespace qve {

class QVE_Message;

/// Prints the first `size` bytes of a message for debugging: the header, the command or status, and the bytes in
/// hexadecimal beside their characters. Any bytes will do.
void QVE_DumpMessage(std::ostream& stream, const QVE_Message& message, std::size_t size);

}  // namespace qve
