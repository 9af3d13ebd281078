#include "cli/Prompt.h"

#include <histedit.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "cli/Interrupt.h"

namespace qve::cli {
namespace {

constexpr int s_historySize = 1000;

std::string HistoryPath() {
    const char* home = std::getenv("HOME");
    return home ? std::string(home) + "/.qve_history" : std::string();
}

}  // namespace

struct Prompt::Impl {
    EditLine* line = nullptr;
    History* history = nullptr;
    HistEvent event{};
    std::string path = HistoryPath();
    const char* prompt = "";
};

Prompt::Prompt() : m_impl(std::make_unique<Impl>().release()) {
    Impl& impl = *m_impl;
    impl.line = el_init("qve", stdin, stdout, stderr);
    impl.history = history_init();
    history(impl.history, &impl.event, H_SETSIZE, s_historySize);
    if (!impl.path.empty()) history(impl.history, &impl.event, H_LOAD, impl.path.c_str());
    el_set(impl.line, EL_CLIENTDATA, m_impl);
    el_set(
        impl.line, EL_PROMPT, +[](EditLine* line) {
            void* data = nullptr;
            el_get(line, EL_CLIENTDATA, &data);
            return const_cast<char*>(static_cast<Impl*>(data)->prompt);
        });
    el_set(impl.line, EL_EDITOR, "emacs");
    el_set(impl.line, EL_HIST, history, impl.history);
    el_source(impl.line, nullptr);
}

Prompt::~Prompt() {
    const std::unique_ptr<Impl> impl(m_impl);
    if (!impl->path.empty()) history(impl->history, &impl->event, H_SAVE, impl->path.c_str());
    history_end(impl->history);
    el_end(impl->line);
}

std::optional<std::string> Prompt::ReadLine(const char* prompt, bool& interrupted) {
    m_impl->prompt = prompt;
    interrupted = false;
    int length = 0;
    const char* text = el_gets(m_impl->line, &length);
    if (length < 0 && errno == EINTR) {
        interrupted = true;
        Interrupt::TakeRequest();
        el_reset(m_impl->line);
        std::fputs("\n", stdout);
        return std::string();
    }
    if (!text || length <= 0) return std::nullopt;
    return std::string(text, static_cast<std::size_t>(length));
}

void Prompt::Remember(const std::string& text) {
    history(m_impl->history, &m_impl->event, H_ENTER, text.c_str());
}

}  // namespace qve::cli
