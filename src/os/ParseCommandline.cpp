#include "os/ParseCommandline.h"

namespace qve {
namespace {

template <class Char>
std::vector<std::basic_string<Char>> Split(std::basic_string_view<Char> text) {
    std::vector<std::basic_string<Char>> arguments;
    std::basic_string<Char> argument;
    bool inArgument = false;
    bool inQuotes = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const Char c = text[i];
        const bool doubled = c == '"' && i + 1 < text.size() && text[i + 1] == '"';
        if (c == '"' && inQuotes && doubled) {
            argument += c;
            ++i;
        } else if (c == '"') {
            // An empty pair of quote marks is an argument, too.
            inArgument = true;
            inQuotes = !inQuotes;
        } else if (c == ' ' && !inQuotes) {
            if (inArgument) arguments.push_back(std::move(argument));
            argument.clear();
            inArgument = false;
        } else {
            argument += c;
            inArgument = true;
        }
    }
    if (inArgument) arguments.push_back(std::move(argument));
    return arguments;
}

}  // namespace

std::vector<std::string> ParseCommandline::Parse(std::string_view text) {
    return Split(text);
}
std::vector<std::wstring> ParseCommandline::Parse(std::wstring_view text) {
    return Split(text);
}

}  // namespace qve
