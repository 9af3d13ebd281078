#pragma once

#include <cstdint>
#include <string>

#include "os/DataFile.h"
#include "system/RefCntObject.h"
#include "system/RefCntPtr.h"

namespace qve {
class QVE_OutputIterator;
}

namespace qve::Server {

/// A database file on its way to a client, as long as it was at the opening. One thread at a time.
class Download : public RefCntObject {
public:
    /// No reply holds more bytes.
    static constexpr std::uint32_t s_mostBytes = 8 << 20;

    /// Opens the file. Throws as DataFile.
    explicit Download(std::wstring path);

    const std::wstring& GetPath() const { return m_path; }
    std::uint64_t GetSize() const { return m_file->GetSize(); }
    /// Writes the next bytes, at most `maxBytes`, with their count. Throws QVE_RuntimeError 40415 at the end, and as
    /// DataFile when the file was cut meanwhile.
    void Recv(std::uint32_t maxBytes, QVE_OutputIterator& out);

private:
    const std::wstring m_path;
    const RefCntPtr<DataFile> m_file;
    std::uint64_t m_sent = 0;
};

}  // namespace qve::Server
