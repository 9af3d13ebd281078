#pragma once

namespace qve {

/// Makes the types and collations of this layer known, in the order in which they need each other. Called first thing
/// at start-up, once or more often, from one thread; nothing may resolve a type before that.
void types_initialization();

}  // namespace qve
