#pragma once

#include <optional>
#include <string>

namespace qve::cli {

/// Lines from a terminal, with editing and a history that lasts from one session to the next. One object at a time.
class Prompt {
public:
    Prompt();
    ~Prompt();
    Prompt(const Prompt&) = delete;
    Prompt& operator=(const Prompt&) = delete;

    /// The next line with its line end. Nothing at the end of the input. Ctrl-C gives up the line: `interrupted` is set
    /// and the line is empty.
    std::optional<std::string> ReadLine(const char* prompt, bool& interrupted);
    /// Adds a text to the history.
    void Remember(const std::string& text);

private:
    struct Impl;
    Impl* m_impl;
};

}  // namespace qve::cli
