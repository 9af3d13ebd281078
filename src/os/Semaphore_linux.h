#pragma once

#include <semaphore.h>

#include "os/Semaphore.h"

namespace qve {

/// A semaphore of the system.
class Semaphore_linux final : public Semaphore {
public:
    Semaphore_linux();
    ~Semaphore_linux() override;
    Semaphore_linux(const Semaphore_linux&) = delete;
    Semaphore_linux& operator=(const Semaphore_linux&) = delete;

    void Acquire() override;
    void Release() override;

private:
    sem_t m_semaphore;
};

}  // namespace qve
