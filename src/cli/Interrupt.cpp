#include "cli/Interrupt.h"

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <system_error>
#include <utility>

namespace qve::cli {
namespace {

std::atomic<int> s_pipe{-1};
std::atomic<bool> s_requested{false};

constexpr char s_cancel = 'c';
constexpr char s_end = 'e';

void OnSignal(int) {
    const int saved = errno;
    [[maybe_unused]] const ssize_t written = write(s_pipe, &s_cancel, 1);
    errno = saved;
}

void MaskInterrupt(int how) {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    pthread_sigmask(how, &signals, nullptr);
}

}  // namespace

Interrupt::Interrupt() {
    if (pipe2(m_ends, O_CLOEXEC) != 0) throw std::system_error(errno, std::generic_category(), "pipe");
    s_pipe = m_ends[1];
    {
        const Shield shield;
        m_thread = std::thread([this] { Watch(); });
    }
    // Without SA_RESTART: a read of the terminal comes back.
    struct sigaction action = {};
    action.sa_handler = OnSignal;
    sigaction(SIGINT, &action, nullptr);
    signal(SIGPIPE, SIG_IGN);
}

Interrupt::~Interrupt() {
    signal(SIGINT, SIG_DFL);
    [[maybe_unused]] const ssize_t written = write(m_ends[1], &s_end, 1);
    m_thread.join();
    s_pipe = -1;
    close(m_ends[0]);
    close(m_ends[1]);
}

void Interrupt::Watch() {
    char what = 0;
    while (true) {
        const ssize_t received = read(m_ends[0], &what, 1);
        if (received < 0 && errno == EINTR) continue;
        if (received != 1 || what == s_end) return;
        std::lock_guard lock(m_mutex);
        if (m_cancel) {
            m_cancel();
        } else {
            s_requested = true;
        }
    }
}

bool Interrupt::TakeRequest() {
    return s_requested.exchange(false);
}

Interrupt::Running::Running(Interrupt& interrupt, std::function<void()> cancel) : m_interrupt(interrupt) {
    std::lock_guard lock(interrupt.m_mutex);
    interrupt.m_cancel = std::move(cancel);
}

Interrupt::Running::~Running() {
    std::lock_guard lock(m_interrupt.m_mutex);
    m_interrupt.m_cancel = nullptr;
}

Interrupt::Shield::Shield() {
    MaskInterrupt(SIG_BLOCK);
}
Interrupt::Shield::~Shield() {
    MaskInterrupt(SIG_UNBLOCK);
}

}  // namespace qve::cli
