#pragma once

#include <string>
#include <string_view>
#include <utility>

namespace qve {

/// Operations on path texts and simple questions to the file system. Paths are wide text with "/" between their parts;
/// on the way to the system they are UTF-8. Nothing here throws but for want of memory, unless it says so.
class Path {
public:
    /// The path as the system takes it.
    static std::string utf8path(std::wstring_view path);
    static std::string nativepath(std::wstring_view path);
    /// A path that came from the system or the command line; broken UTF-8 becomes U+FFFD.
    static std::wstring wcharpath(std::string_view path);

    /// Absolute and normalised, relative to the working directory.
    static std::wstring abspath(std::wstring_view path);
    static bool isabs(std::wstring_view path);
    /// `first` and `second` with one "/" between them. An absolute `second` stands alone, as does either when the
    /// other is empty.
    static std::wstring join(std::wstring_view first, std::wstring_view second);
    /// Without empty and "." parts, and each ".." resolved against the part before it; a leading ".." of a relative
    /// path remains, one of an absolute path goes. The empty path stays empty, and a path that comes to nothing, as
    /// "a/..", is empty too.
    static std::wstring normpath(std::wstring_view path);
    /// Each "\" as "/".
    static std::wstring normseparators(std::wstring_view path);
    /// Directory and name: all before the last "/" (without it, unless it is the root) and all behind it.
    static std::pair<std::wstring, std::wstring> split(std::wstring_view path);
    /// Stem and extension. The extension begins with the last "." of the name and is empty for names without one and
    /// for names whose only "." is their first character; the stem keeps the directory.
    static std::pair<std::wstring, std::wstring> splitext(std::wstring_view path);
    /// A text as the name of a file: the characters that a file name cannot hold, or that trouble tools
    /// (controls, / \ : * ? " < > |), become "_", as does a leading ".". Never empty.
    static std::wstring cleanname(std::wstring_view name);

    static bool exists(std::wstring_view path);
    static bool isdir(std::wstring_view path);
    /// True for anything that exists and is no directory.
    static bool isfile(std::wstring_view path);
    /// The system's access(): `mode` of R_OK, W_OK, X_OK, F_OK.
    static bool access(std::wstring_view path, int mode);
};

}  // namespace qve
