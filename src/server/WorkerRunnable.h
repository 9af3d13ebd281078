#pragma once

#include "server/Connection.h"
#include "system/RefCntPtr.h"
#include "system/Runnable.h"

namespace qve::Server {

/// Runs what comes through the work queue, until a null item.
class WorkerRunnable : public Runnable {
public:
    explicit WorkerRunnable(RefCntPtr<WorkQueue> work) : m_work(std::move(work)) {}
    void Run() override {
        while (const RefCntPtr<Runnable> item = m_work->Pop()) item->Run();
    }

private:
    const RefCntPtr<WorkQueue> m_work;
};

}  // namespace qve::Server
