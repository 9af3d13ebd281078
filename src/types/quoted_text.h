#pragma once

#include <iosfwd>
#include <string_view>
#include <vector>

namespace qve {

/// The text form of heap values: single quotes, and \0 \t \n \r \' \\ for these six bytes; other bytes stand for
/// themselves.
std::ostream& write_quoted(std::ostream& stream, std::string_view bytes);

/// Reads that form. Recognises a null as usrtype::nullfromstream does; then, and when no quote comes next (which fails
/// the stream), false. The end of the input ends the text.
bool read_quoted(std::istream& stream, std::vector<char>& bytes);

}  // namespace qve
