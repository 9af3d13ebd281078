#pragma once

#include "system/RefCntObject.h"

namespace qve {

/// The body of a thread or of one unit of queued work.
class Runnable : public RefCntObject {
public:
    virtual void Run() = 0;
};

}  // namespace qve
