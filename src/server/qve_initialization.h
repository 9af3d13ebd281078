#pragma once

namespace qve {

/// Completes the engine's static tables: types, collations, kernels, functions. Called once, before anything else of
/// the engine, from one thread.
void qve_initialization();

}  // namespace qve
