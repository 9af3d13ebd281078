#include "server/Download.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "server/protocol/QVE_OutputIterator.h"
#include "server/status.h"
#include "system/QuillonException.h"
#include "system/unicode.h"

namespace qve::Server {

Download::Download(std::wstring path) : m_path(std::move(path)), m_file(MakeRef<DataFile>(m_path, false)) {}

void Download::Recv(std::uint32_t maxBytes, QVE_OutputIterator& out) {
    const std::uint64_t rest = GetSize() - m_sent;
    if (rest == 0) {
        throw QVE_RuntimeError(status::Download_Recv, "DownloadRecv: end-of-file \"" + narrow(m_path) + "\"");
    }
    std::vector<char> bytes(std::min<std::uint64_t>({rest, maxBytes, s_mostBytes}));
    m_file->Read(m_sent, bytes.data(), bytes.size());
    out.WriteBytes(bytes.size(), bytes.data());
    m_sent += bytes.size();
}

}  // namespace qve::Server
