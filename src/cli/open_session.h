#pragma once

#include <memory>

namespace qve::cli {

class Interrupt;
class Session;
struct ServerChoice;

/// A session on the chosen server, which is started first when none is named. When that fails, says why on standard
/// error and gives null: the program then ends with s_noServer. `interrupt` outlives the session.
std::unique_ptr<Session> OpenSession(const ServerChoice& choice, Interrupt& interrupt);

}  // namespace qve::cli
