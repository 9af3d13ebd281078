#pragma once

#include <mutex>
#include <string>

#include "storage/stream/DelegatedDataStream.h"
#include "system/TRecursiveMutex.h"

namespace qve {

/// A stream for intermediate data: in memory while it is not above the page limit, then in a temporary file, which goes
/// with the last reference. Purge moves it to the file early; a writable fork does too, so that both sides see the same
/// growing file. Fork may be called by several threads at once.
class TempFileDataStream final : public DelegatedDataStream {
public:
    TempFileDataStream();
    ~TempFileDataStream() override;

    bool IsInFile() const { return m_inFile; }
    /// The path of the temporary file; empty when there is none, or when it was renamed and is to stay.
    const std::wstring& GetPath() const { return m_path; }

    uint64_t Purge() override;
    RefCntPtr<DataStream> Fork(bool readOnly) override;
    void Extend(uint64_t count) override;
    void Resize(uint64_t size) override;
    void Append(DataStream& from) override;
    void Append(const void* bytes, uint64_t count) override;
    bool Rename(const std::wstring& path) override;
    void SwitchToFile();

private:
    TempFileDataStream(RefCntPtr<DataStream> delegate, bool inFile, std::wstring path);
    void SwitchIfLarger(uint64_t size);

    std::wstring m_path;
    bool m_inFile = false;
    TRecursiveMutex m_mutex;
};

}  // namespace qve
