#include "server/StopSignals.h"

#include <poll.h>
#include <signal.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <system_error>
#include <utility>

namespace qve {
namespace {

sigset_t SignalSet() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGINT);
    return signals;
}

}  // namespace

void StopSignals::Block() {
    const sigset_t signals = SignalSet();
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    signal(SIGPIPE, SIG_IGN);
}

StopSignals::StopSignals(std::function<void()> onStop) : m_end(eventfd(0, EFD_CLOEXEC)) {
    if (m_end < 0) throw std::system_error(errno, std::generic_category(), "eventfd");
    m_thread = std::thread([this, onStop = std::move(onStop)] { Wait(onStop); });
}

StopSignals::~StopSignals() {
    const std::uint64_t raise = 1;
    [[maybe_unused]] const ssize_t written = write(m_end, &raise, sizeof(raise));
    m_thread.join();
    close(m_end);
}

void StopSignals::Wait(const std::function<void()>& onStop) const {
    const sigset_t signals = SignalSet();
    const int source = signalfd(-1, &signals, SFD_CLOEXEC);
    pollfd waits[] = {{source, POLLIN, 0}, {m_end, POLLIN, 0}};
    while (true) {
        if (poll(waits, 2, -1) < 0) {
            if (errno == EINTR) continue;
            break;
        }
        if (waits[1].revents != 0) break;
        if (waits[0].revents == 0) continue;
        signalfd_siginfo received;
        if (read(source, &received, sizeof(received)) == sizeof(received)) onStop();
    }
    close(source);
}

}  // namespace qve
