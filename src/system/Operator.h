#pragma once

#include "system/RefCntObject.h"

namespace qve {

/// Base of everything that a plan consists of.
class Operator : public RefCntObject {
public:
    /// Thrown out of long loops when the statement was cancelled. Deliberately no std::exception: it carries no text,
    /// and handlers of faults must not take it for one. Clients see status 50000.
    struct CancelledException {};
};

}  // namespace qve
