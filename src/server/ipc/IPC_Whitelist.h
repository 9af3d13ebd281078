#pragma once

#include <memory>
#include <string>

namespace qve {

/// The addresses from which peers may connect. Immutable after construction.
class IPC_Whitelist {
public:
    /// Reads a comma-separated list of `addr` and `from-to`. An empty list admits nobody. Throws std::invalid_argument.
    explicit IPC_Whitelist(const std::string& text);
    ~IPC_Whitelist();
    IPC_Whitelist(const IPC_Whitelist&) = delete;
    IPC_Whitelist& operator=(const IPC_Whitelist&) = delete;

    /// Whether a range holds the address, given as text. IPv4 addresses that are mapped into IPv6 count as IPv4.
    /// Throws std::invalid_argument when the text is no address.
    bool IsWhitelisted(const std::string& address) const;

private:
    class IPC_Whitelist_Impl;
    std::unique_ptr<IPC_Whitelist_Impl> m_impl;
};

}  // namespace qve
