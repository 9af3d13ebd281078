#pragma once

#include <atomic>
#include <string>

#include "ingest/TextDataStream.h"
#include "os/DataFile.h"

namespace qve {

/// The bytes of a text file, as long as it was at the opening.
class TextFileDataStream : public TextDataStream {
public:
    /// Throws as DataFile does.
    explicit TextFileDataStream(const std::wstring& path);
    uint64_t GetSize() const override { return m_size; }
    RefCntPtr<DataStream> Fork(bool readOnly) override;
    const std::wstring& GetPath() const { return m_file->GetPath(); }
    /// How many bytes have been read. Any thread may ask.
    uint64_t GetPosition() const { return m_position.load(std::memory_order_relaxed); }
    /// When the file was changed last, in ticks of the file system's clock.
    long long GetModificationTime() const;

private:
    bool ReadNextBlock(std::vector<char>& buffer, uint64_t count) override;
    void Rewind() override { m_position = 0; }

    RefCntPtr<DataFile> m_file;
    uint64_t m_size;
    std::atomic<uint64_t> m_position{0};
};

}  // namespace qve
