#include "os/DataFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "metrics/Scope.h"
#include "os/MappedFile.h"
#include "os/OS.h"
#include "os/Path.h"
#include "os/PosixApi.h"
#include "os/status.h"
#include "system/QuillonException.h"

namespace qve {

namespace {

std::atomic<uint64_t> s_nextId{1};

std::string where(const char* function, const std::wstring& path) {
    return std::string(" - DataFile::") + function + "(path=\"" + Path::utf8path(path) + "\")";
}

}  // namespace

DataFile::DataFile(std::wstring_view path, bool writable, bool temporary, FILE* file)
    : m_path(path),
      m_file(file),
      m_writable(writable),
      m_temporary(temporary),
      m_ownFile(file == nullptr),
      m_id(s_nextId.fetch_add(1, std::memory_order_relaxed)),
      m_mapEntireFile(MappedFile::s_MemoryMapEntireFile.load(std::memory_order_relaxed)) {
    if (file)
        UpdateSize();
    else
        Open();
}

DataFile::~DataFile() {
    Close();
}

int DataFile::GetDescriptor() const {
    return m_file ? ::fileno(m_file) : -1;
}

void DataFile::Open() {
    if (m_file) return;
    Metrics::Scope scope("DataFile::Open", Metrics::Bits::Files);
    scope.NameValue("dfid", m_id);
    scope.NameValue("inPath", m_path);
    scope.NameValue("writable", m_writable);
    scope.NameValue("temporary", m_temporary);
    scope.NameValue("ownFile", m_ownFile);
    m_file = ::fopen(Path::utf8path(m_path).c_str(), m_writable ? "rb+e" : "rbe");
    if (!m_file) PosixApi::Throw(errno, status::DataFile_Open, where("Open", m_path));
    m_position = 0;
    try {
        UpdateSize();
    } catch (...) {
        ::fclose(m_file);
        m_file = nullptr;
        throw;
    }
}

void DataFile::Close() {
    if (!m_file) return;
    if (m_writable && m_capacity > m_size) {
        // Should this fail, the file keeps its room: longer than its contents, but whole.
        if (::fflush(m_file) == 0 && ::ftruncate(GetDescriptor(), static_cast<off_t>(m_size)) == 0) m_capacity = m_size;
    }
    // What a write could not bring to the disk was reported by Flush; nobody listens here.
    if (m_ownFile) ::fclose(m_file);
    m_file = nullptr;
    if (m_temporary) ::unlink(Path::utf8path(m_path).c_str());
}

uint64_t DataFile::UpdateSize() {
    if (m_writable) Flush();
    struct stat status;
    if (::fstat(GetDescriptor(), &status) != 0) PosixApi::Throw(errno, status::DataFile_Size, where("Size", m_path));
    if (S_ISDIR(status.st_mode)) PosixApi::Throw(EISDIR, status::DataFile_Open, where("Open", m_path));
    return m_capacity = m_size = static_cast<uint64_t>(status.st_size);
}

void DataFile::Resize(uint64_t size, uint64_t capacity) {
    capacity = std::max(size, capacity);
    if (capacity > static_cast<uint64_t>(INT64_MAX))
        PosixApi::Throw(EFBIG, status::DataFile_Resize, where("Resize", m_path));
    if (m_position > 0) Flush();
    const int descriptor = GetDescriptor();
    int error = 0;
    if (capacity > m_capacity) {
        const off_t old = static_cast<off_t>(m_capacity);
        do {
            error = ::posix_fallocate(descriptor, old, static_cast<off_t>(capacity) - old);
        } while (error == EINTR);
        // A reservation that failed half-way leaves a longer file behind.
        if (error != 0 && ::ftruncate(descriptor, old) != 0) error = errno;
    } else if (capacity < m_capacity && ::ftruncate(descriptor, static_cast<off_t>(capacity)) != 0) {
        error = errno;
    }
    if (error != 0) PosixApi::Throw(error, status::DataFile_Resize, where("Resize", m_path));
    m_size = size;
    m_capacity = capacity;
}

void DataFile::Trim() {
    if (!m_file || !m_writable) return;
    Flush();
    if (m_capacity > m_size) Resize(m_size);
}

void DataFile::Write(const void* bytes, size_t count) {
    errno = 0;
    if (::fwrite(bytes, 1, count, m_file) != count)
        PosixApi::Throw(errno, status::DataFile_Write, where("Write", m_path));
    m_position += count;
    m_size = std::max(m_size, m_position);
    m_capacity = std::max(m_size, m_capacity);
}

void DataFile::WriteAt(uint64_t position, const void* bytes, size_t count) {
    const char* from = static_cast<const char*>(bytes);
    while (count > 0) {
        const ssize_t done = ::pwrite(GetDescriptor(), from, count, static_cast<off_t>(position));
        if (done < 0 && errno == EINTR) continue;
        if (done < 0) PosixApi::Throw(errno, status::DataFile_Write, where("WriteAt", m_path));
        from += done;
        position += static_cast<uint64_t>(done);
        count -= static_cast<size_t>(done);
    }
    m_size = std::max(m_size, position);
    m_capacity = std::max(m_size, m_capacity);
}

void DataFile::Flush() {
    if (::fflush(m_file) != 0) PosixApi::Throw(errno, status::DataFile_Write, where("Flush", m_path));
}

void DataFile::Read(uint64_t position, void* bytes, size_t count) const {
    char* to = static_cast<char*>(bytes);
    while (count > 0) {
        const ssize_t done = ::pread(GetDescriptor(), to, count, static_cast<off_t>(position));
        if (done < 0 && errno == EINTR) continue;
        if (done < 0) PosixApi::Throw(errno, status::DataFile_Read, where("Read", m_path));
        if (done == 0) {
            throw QVE_RuntimeError(status::DataFile_Read, "The file ends before the data" + where("Read", m_path));
        }
        to += done;
        position += static_cast<uint64_t>(done);
        count -= static_cast<size_t>(done);
    }
}

void DataFile::Rename(std::wstring_view path) {
    OS::rename(m_path, path);
    m_path = path;
    m_temporary = false;
}

}  // namespace qve
