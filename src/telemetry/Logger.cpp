#include "telemetry/Logger.h"

#include <memory>
#include <mutex>
#include <shared_mutex>

#include "system/TReadWriteLock.h"
#include "telemetry/NullLogger.h"

namespace qve {

namespace {

struct Instance {
    TReadWriteLock lock;
    RefCntPtr<Logger> logger = MakeRef<NullLogger>();
};

// Never destroyed: threads that nobody joins may log while the process ends.
Instance& instance() {
    static Instance* const s_instance = std::make_unique<Instance>().release();
    return *s_instance;
}

}  // namespace

void Logger::Init(RefCntPtr<Logger> logger) {
    if (!logger) logger = MakeRef<NullLogger>();
    std::unique_lock lock(instance().lock);
    instance().logger.swap(logger);
    lock.unlock();  // the former logger ends without it
}

RefCntPtr<Logger> Logger::Get() {
    std::shared_lock lock(instance().lock);
    return instance().logger;
}

}  // namespace qve
