#include "ingest/TextFileDataStream.h"

#include <algorithm>
#include <filesystem>

#include "os/Path.h"

namespace qve {

TextFileDataStream::TextFileDataStream(const std::wstring& path)
    : TextDataStream("TextFileDataStream"), m_file(MakeRef<DataFile>(path, false)), m_size(m_file->GetSize()) {}

RefCntPtr<DataStream> TextFileDataStream::Fork(bool) {
    return MakeRef<TextFileDataStream>(GetPath());
}

long long TextFileDataStream::GetModificationTime() const {
    std::error_code error;
    const auto time = std::filesystem::last_write_time(Path::utf8path(GetPath()), error);
    return error ? 0 : static_cast<long long>(time.time_since_epoch().count());
}

bool TextFileDataStream::ReadNextBlock(std::vector<char>& buffer, uint64_t count) {
    const uint64_t taken = std::min(count, m_size - m_position);
    if (taken == 0) return false;
    const size_t old = buffer.size();
    buffer.resize(old + taken);
    m_file->Read(m_position, buffer.data() + old, taken);
    m_position += taken;
    return true;
}

}  // namespace qve
