#include "server/protocol/QVE_DumpMessage.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <ostream>
#include <string>

#include "server/protocol/QVE_Command.h"
#include "server/protocol/QVE_Message.h"

namespace qve {
namespace {

template <class T>
T Load(const std::uint8_t* from) {
    T value;
    std::memcpy(&value, from, sizeof(T));
    return value;
}

/// The first word of the body: a command that we know by name, else a status.
std::string DescribeWord(std::uint32_t word) {
    constexpr std::uint32_t commandPrefix = 0xF1D3A400;
    if ((word & 0xFFFFFF00) == commandPrefix) {
        return fmt::format("command={:#x} ({})\n", word, QVE_CommandName(static_cast<QVE_Command>(word)));
    }
    return fmt::format("status={}\n", static_cast<std::int32_t>(word));
}

}  // namespace

void QVE_DumpMessage(std::ostream& stream, const QVE_Message& message, std::size_t size) {
    size = std::min(size, message.size());
    const std::uint8_t* bytes = message.data();
    std::string text = fmt::format("message of {} bytes\n", message.size());
    if (size >= QVE_Message::s_headerSize) {
        text += fmt::format("magic={:#x} size={} guid={}\n", Load<std::uint32_t>(bytes), Load<std::uint32_t>(bytes + 4),
                            Load<std::uint64_t>(bytes + 8));
    }
    if (size >= QVE_Message::s_headerSize + 4)
        text += DescribeWord(Load<std::uint32_t>(bytes + QVE_Message::s_headerSize));
    constexpr std::size_t bytesPerLine = 16;
    for (std::size_t start = 0; start < size; start += bytesPerLine) {
        const std::size_t end = std::min(start + bytesPerLine, size);
        fmt::format_to(std::back_inserter(text), "{:08x} ", start);
        for (std::size_t i = start; i < end; ++i) fmt::format_to(std::back_inserter(text), " {:02x}", bytes[i]);
        text.append(3 * (start + bytesPerLine - end) + 2, ' ');
        for (std::size_t i = start; i < end; ++i)
            text += bytes[i] >= 0x20 && bytes[i] < 0x7F ? static_cast<char>(bytes[i]) : '.';
        text += '\n';
    }
    stream << text;
}

}  // namespace qve
