#include "os/Path.h"

#include <sys/stat.h>
#include <unistd.h>

#include <vector>

#include "os/OS.h"
#include "system/unicode.h"

namespace qve {

namespace {

bool stat_path(std::wstring_view path, struct stat& status) {
    return ::stat(Path::utf8path(path).c_str(), &status) == 0;
}

}  // namespace

std::string Path::utf8path(std::wstring_view path) {
    return narrow(path);
}

std::string Path::nativepath(std::wstring_view path) {
    return narrow(path);
}

std::wstring Path::wcharpath(std::string_view path) {
    return widen(path);
}

std::wstring Path::abspath(std::wstring_view path) {
    return normpath(isabs(path) ? std::wstring(path) : join(OS::getcwd(), path));
}

bool Path::isabs(std::wstring_view path) {
    return path.starts_with(L'/');
}

std::wstring Path::join(std::wstring_view first, std::wstring_view second) {
    if (first.empty() || isabs(second)) return std::wstring(second);
    std::wstring path(first);
    if (second.empty()) return path;
    if (!path.ends_with(L'/')) path += L'/';
    return path += second;
}

std::wstring Path::normpath(std::wstring_view path) {
    const bool absolute = isabs(path);
    std::vector<std::wstring_view> parts;
    for (size_t begin = 0; begin < path.size();) {
        const size_t end = std::min(path.find(L'/', begin), path.size());
        const std::wstring_view part = path.substr(begin, end - begin);
        begin = end + 1;
        if (part.empty() || part == L".") continue;
        if (part != L"..") {
            parts.push_back(part);
        } else if (!parts.empty() && parts.back() != L"..") {
            parts.pop_back();
        } else if (!absolute) {
            parts.push_back(part);
        }
    }
    std::wstring result;
    if (absolute) result = L"/";
    for (const std::wstring_view part : parts) {
        if (!result.empty() && !result.ends_with(L'/')) result += L'/';
        result += part;
    }
    return result;
}

std::wstring Path::normseparators(std::wstring_view path) {
    std::wstring result(path);
    for (wchar_t& c : result) {
        if (c == L'\\') c = L'/';
    }
    return result;
}

std::pair<std::wstring, std::wstring> Path::split(std::wstring_view path) {
    const size_t slash = path.rfind(L'/');
    if (slash == path.npos) return {std::wstring(), std::wstring(path)};
    std::wstring_view directory = path.substr(0, slash);
    while (directory.ends_with(L'/')) directory.remove_suffix(1);
    if (directory.empty()) directory = path.substr(0, 1);
    return {std::wstring(directory), std::wstring(path.substr(slash + 1))};
}

std::pair<std::wstring, std::wstring> Path::splitext(std::wstring_view path) {
    const size_t slash = path.rfind(L'/');
    const size_t name = slash == path.npos ? 0 : slash + 1;
    const size_t point = path.rfind(L'.');
    if (point == path.npos || point <= name) return {std::wstring(path), std::wstring()};
    return {std::wstring(path.substr(0, point)), std::wstring(path.substr(point))};
}

std::wstring Path::cleanname(std::wstring_view name) {
    constexpr std::wstring_view forbidden = L"/\\:*?\"<>|";
    std::wstring clean(name);
    for (wchar_t& c : clean) {
        if (c < 0x20 || c == 0x7F || forbidden.find(c) != forbidden.npos) c = L'_';
    }
    if (clean.empty()) return L"_";
    if (clean.front() == L'.') clean.front() = L'_';
    return clean;
}

bool Path::exists(std::wstring_view path) {
    struct stat status;
    return stat_path(path, status);
}

bool Path::isdir(std::wstring_view path) {
    struct stat status;
    return stat_path(path, status) && S_ISDIR(status.st_mode);
}

bool Path::isfile(std::wstring_view path) {
    struct stat status;
    return stat_path(path, status) && !S_ISDIR(status.st_mode);
}

bool Path::access(std::wstring_view path, int mode) {
    return ::access(utf8path(path).c_str(), mode) == 0;
}

}  // namespace qve
