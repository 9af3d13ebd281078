#include "os/Semaphore_linux.h"

#include <cerrno>

#include "os/PosixApi.h"
#include "os/status.h"

namespace qve {

Semaphore_linux::Semaphore_linux() {
    if (::sem_init(&m_semaphore, 0, 0) != 0)
        PosixApi::Throw(errno, status::Semaphore_Construct, " - Semaphore::Construct");
}

Semaphore_linux::~Semaphore_linux() {
    ::sem_destroy(&m_semaphore);
}

void Semaphore_linux::Acquire() {
    while (::sem_wait(&m_semaphore) != 0 && errno == EINTR) {
    }
}

void Semaphore_linux::Release() {
    ::sem_post(&m_semaphore);
}

std::unique_ptr<Semaphore> Semaphore::Construct() {
    return std::make_unique<Semaphore_linux>();
}

}  // namespace qve
