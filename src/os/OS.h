#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace qve {

/// The file system and the process. Paths as in Path. Failures throw QVE_RuntimeError with the status that
/// PosixApi gives to the system's error, or else the operation's own number, and a text that names the path.
class OS {
public:
    static int getpid();
    static std::wstring getcwd();
    /// The names in a directory, without "." and "..", in no order.
    static std::vector<std::wstring> listdir(std::wstring_view path);
    /// One entry of listdir2.
    struct Entry {
        std::wstring name;
        bool directory;
    };
    /// The same, with the kind of each entry. A link counts as what it points to.
    static std::vector<Entry> listdir2(std::wstring_view path);
    /// What the file system says of a file.
    struct Status {
        uint64_t size;     // bytes
        int64_t modified;  // seconds since 1970, UTC
        bool directory;
    };
    static Status stat(std::wstring_view path);
    /// Makes a directory. With `parents`, makes those that are missing on the way, and a directory that is there
    /// already is no failure; without, it is ("Path exists.").
    static void mkdir(std::wstring_view path, bool parents);
    /// Moves a file or a directory, also from one file system to another.
    static void rename(std::wstring_view from, std::wstring_view to);
    /// Lets two paths of one file system change places in one step. False where the file system cannot do that.
    static bool exchange(std::wstring_view one, std::wstring_view other);
    /// Removes a directory; with `recursive`, its contents first. Links inside it are removed, not followed.
    static void rmdir(std::wstring_view path, bool recursive);
    static void unlink(std::wstring_view path);
    /// Makes an empty file, or leaves the one that is there.
    static void touch(std::wstring_view path);
    /// Returns when the bytes of a file, or the entries of a directory, are on the disk.
    static void sync(std::wstring_view path);
    /// Copies the bytes of a file over another, which is made if needed.
    static void copy(std::wstring_view from, std::wstring_view to);

    /// Sets the directory of temporary files for the process.
    static void tempdir(std::wstring_view path);
    /// The directory of temporary files: what tempdir() set, else made once under TMPDIR or "/tmp".
    static std::wstring gettempdir();
    /// Makes an empty file of a new name, open to this user only, and returns its path.
    /// An empty `directory` stands for gettempdir(), an empty `prefix` for "qve_".
    static std::wstring mkstemp(std::wstring_view directory = {}, std::wstring_view prefix = {},
                                std::wstring_view suffix = {});
    /// The same for a directory.
    static std::wstring mkdtemp(std::wstring_view directory = {}, std::wstring_view prefix = {},
                                std::wstring_view suffix = {});

    /// The system's text for an error number; safe from any thread.
    static std::string strerror(int error);
    static int get_errno();

    /// Limits of the process.
    class Limits {
    public:
        static uint64_t get_descriptors_soft_limit();
        static uint64_t get_descriptors_hard_limit();
        static void set_descriptors_soft_limit(uint64_t limit);
    };
};

}  // namespace qve
