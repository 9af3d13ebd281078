#pragma once

namespace qve {

/// Binds every file of kernels into the program. Called once at start; calling it again changes nothing.
void define_primitives();

}  // namespace qve
