#include "server/ipc/IPC_Whitelist.h"

#include <boost/asio/ip/address.hpp>
#include <stdexcept>
#include <string_view>
#include <vector>

namespace qve {
namespace {

using boost::asio::ip::address;

address ParseAddr(std::string_view text) {
    constexpr std::string_view mapped = "::ffff:";
    const std::string_view given = text;
    if (text.starts_with(mapped)) text.remove_prefix(mapped.size());
    boost::system::error_code error;
    const address parsed = boost::asio::ip::make_address(std::string(text), error);
    if (error) {
        std::string message = "whitelist: could not parse " + std::string(given);
        if (text.find(':') != std::string_view::npos) message += ". Does your Operating System support IPv6?";
        throw std::invalid_argument(message);
    }
    if (parsed.is_unspecified()) throw std::invalid_argument("whitelist: undefined ip address");
    return parsed;
}

std::vector<std::string_view> Split(std::string_view text, char separator) {
    std::vector<std::string_view> parts;
    while (true) {
        const std::size_t at = text.find(separator);
        parts.push_back(text.substr(0, at));
        if (at == std::string_view::npos) return parts;
        text.remove_prefix(at + 1);
    }
}

}  // namespace

class IPC_Whitelist::IPC_Whitelist_Impl {
public:
    void Add(std::string_view entry) {
        const std::vector<std::string_view> parts = Split(entry, '-');
        if (parts.size() > 2) {
            throw std::invalid_argument("whitelist: malformed ip range, should be '<addr>' or '<from_addr>-<to_addr>'");
        }
        m_ranges.push_back({ParseAddr(parts.front()), ParseAddr(parts.back())});
    }

    bool Contains(const address& peer) const {
        for (const Range& range : m_ranges) {
            const bool sameFamily = range.from.is_v4() == peer.is_v4() && range.to.is_v4() == peer.is_v4();
            // Addresses compare by their bytes, and those of IPv6 then by their scope.
            if (sameFamily && range.from <= peer && peer <= range.to) return true;
        }
        return false;
    }

private:
    struct Range {
        address from;
        address to;
    };
    std::vector<Range> m_ranges;
};

IPC_Whitelist::IPC_Whitelist(const std::string& text) : m_impl(std::make_unique<IPC_Whitelist_Impl>()) {
    for (const std::string_view entry : Split(text, ',')) {
        if (!entry.empty()) m_impl->Add(entry);
    }
}

IPC_Whitelist::~IPC_Whitelist() = default;

bool IPC_Whitelist::IsWhitelisted(const std::string& address) const {
    return m_impl->Contains(ParseAddr(address));
}

}  // namespace qve
