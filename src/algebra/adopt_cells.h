#pragma once

namespace qve {

class Column;

/// Makes `target`, a column without streams, ready to take the cells of `source` as they are stored: on an empty
/// temporary stream, with the width and the dictionary that the source has now, and without claims about the dictionary
/// that the source does not make.
void adopt_cells(Column& target, const Column& source);

}  // namespace qve
