#include "storage/PropertyFile.h"

#include <algorithm>
#include <cstring>

#include "storage/status.h"
#include "system/QuillonException.h"
#include "system/unicode.h"

namespace qve {

namespace {

// Some hundred properties of some hundred characters make a big one.
constexpr uint64_t maxPropertyFile = uint64_t{1} << 24;

}  // namespace

std::string FormatProperties(const usrprops& properties) {
    std::string text;
    for (const auto& [key, value] : OrderedUserProperties(properties)) {
        text += narrow(UsrPropKey_ToString(key));
        text += ':';
        // A line is the unit: a break inside a value would begin another property.
        std::string line = narrow(value);
        std::replace_if(
            line.begin(), line.end(), [](char c) { return c == '\n' || c == '\r'; }, ' ');
        text += line + '\n';
    }
    return text;
}

usrprops ParseProperties(std::string_view text) {
    usrprops properties;
    while (!text.empty()) {
        const size_t end = std::min(text.find('\n'), text.size());
        std::string_view line = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
        if (line.empty() || line.front() == '#') continue;
        const size_t colon = line.find(':');
        if (colon == std::string_view::npos || colon == 0 || colon + 1 == line.size()) continue;
        properties.set(UsrPropKey_FromString(widen(line.substr(0, colon))), widen(line.substr(colon + 1)));
    }
    return properties;
}

usrprops ReadPropertyFile(TableSpace& space, const std::wstring& path) {
    std::string text;
    {
        const RefCntPtr<DataStream> stream = space.open(path, false);
        const uint64_t size = stream->GetSize();
        if (size > maxPropertyFile) {
            throw QVE_RuntimeError(status::ReadPropertyFile,
                                   "ReadPropertyFile: \"" + narrow(path) + "\" is no property file");
        }
        while (text.size() < size) {
            const uint64_t limit = std::min(stream->Seek(text.size(), 1), size - text.size());
            text.append(stream->GetInput(0), limit);
        }
    }
    space.close(path);
    return ParseProperties(text);
}

void WritePropertyFile(TableSpace& space, const std::wstring& path, const usrprops& properties) {
    const std::string text = FormatProperties(properties);
    {
        const RefCntPtr<DataStream> stream = space.open(path, true);
        stream->Resize(text.size());
        stream->Seek(0, text.size());
        std::memcpy(stream->GetOutput(0), text.data(), text.size());
    }
    space.close(path);
}

}  // namespace qve
