#include "storage/stream/DataStream.h"

#include <algorithm>
#include <cstring>
#include <thread>

#include "os/MappedFile.h"
#include "system/CancelScope.h"

namespace qve {

namespace {

// Writing out a whole window takes long enough to be noticed by who cancels.
constexpr uint64_t appendedAtOnce = uint64_t{4} << 20;

}  // namespace

std::atomic<uint64_t> DataStream::s_maxlimit{uint64_t{64} << 20};
std::atomic<unsigned> DataStream::s_executing{0};

DataStream::Guid DataStream::Guid::Next() {
    static std::atomic<uint64_t> last{0};
    return {last.fetch_add(1, std::memory_order_relaxed) + 1};
}

DataStream::DataStream(const char* typeName)
    : m_guid(Guid::Next()),
      m_pageLimit(s_maxlimit.load(std::memory_order_relaxed)),
      m_dsid(std::to_string(m_guid.value)),
      m_typeName(typeName) {}

void DataStream::CopyIdentity(DataStream& fork) const {
    fork.m_owned = m_owned;
    fork.m_guid = m_guid;
    fork.m_pageLimit = m_pageLimit;
    fork.m_accelerator = m_accelerator;
    fork.m_dsid = m_dsid;
}

uint64_t DataStream::Load(uint64_t, uint64_t) const {
    return 0;
}

bool DataStream::Rename(const std::wstring&) {
    return false;
}

void DataStream::OverlayData(DataStream& to, DataStream& from, uint64_t position) {
    const uint64_t size = from.GetSize();
    const uint64_t overlaid = std::min(size, to.GetSize() - position);
    for (uint64_t done = 0; done < overlaid;) {
        const uint64_t rest = overlaid - done;
        const uint64_t input = from.Seek(done, std::min(rest, from.GetPageLimit()));
        const uint64_t output = to.Seek(position + done, std::min(rest, to.GetPageLimit()));
        const uint64_t count = std::min({input, output, rest});
        std::memcpy(to.GetOutput(0), from.GetInput(0), count);
        done += count;
    }
    if (overlaid < size) {
        from.Seek(overlaid, 0);
        to.Append(from);
    }
}

void DataStream::CopyData(DataStream& to, DataStream& from) {
    OverlayData(to, from, 0);
    if (to.GetSize() != from.GetSize()) to.Resize(from.GetSize());
}

void DataStream::AppendData(DataStream& to, DataStream& from) {
    OverlayData(to, from, to.GetSize());
}

void DataStream::AppendWindows(DataStream& from) {
    const uint64_t end = from.GetSize();
    for (uint64_t position = from.GetCursor(); position < end;) {
        CancelScope::Check();
        const uint64_t wanted = std::min({end - position, from.GetPageLimit(), appendedAtOnce});
        const uint64_t count = std::min(from.Seek(position, wanted), wanted);
        Append(from.GetInput(0), count);
        position += count;
    }
}

void DataStream::SetWorkBufferSize(unsigned megabytes) {
    s_maxlimit.store(uint64_t{std::max(megabytes, 1u)} << 20, std::memory_order_relaxed);
}

unsigned DataStream::GetWorkBufferSize() {
    return static_cast<unsigned>(s_maxlimit.load(std::memory_order_relaxed) >> 20);
}

uint64_t DataStream::GetMaxMemoryLimit() {
    return MappedFile::Available() / std::max(s_executing.load(std::memory_order_relaxed), 1u);
}

uint64_t DataStream::GetMaxPageLimit() {
    return std::min(GetMaxMemoryLimit(), uint64_t{0x80000000});
}

unsigned DataStream::GetMaxConcurrency() {
    return std::max(std::thread::hardware_concurrency() / 2, 2u);
}

}  // namespace qve
