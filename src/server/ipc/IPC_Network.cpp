#include "server/ipc/IPC_Network.h"

#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <csignal>
#include <stdexcept>
#include <thread>

#include "server/ipc/IPC_Socket.h"

namespace qve {

using boost::asio::ip::tcp;

class IPC_Network::Impl {
public:
    Impl() : m_work(m_service.get_executor()), m_thread([this] { Run(); }) {}
    ~Impl() {
        m_service.stop();
        m_thread.join();
    }
    boost::asio::io_context& GetService() { return m_service; }

private:
    void Run() {
        // Signals are for the threads of the program that uses us.
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_BLOCK, &all, nullptr);
        m_service.run();
    }

    boost::asio::io_context m_service;
    boost::asio::executor_work_guard<boost::asio::io_context::executor_type> m_work;
    std::thread m_thread;
};

IPC_Network::IPC_Network() : m_impl(std::make_unique<Impl>()) {}
IPC_Network::~IPC_Network() = default;

IPC_Network& IPC_Network::GetInstance() {
    static IPC_Network network;
    return network;
}

boost::asio::io_context& IPC_Network::GetService() {
    return m_impl->GetService();
}

std::shared_ptr<IPC_Socket> IPC_Network::CreateNetworkSocket() {
    return std::make_shared<IPC_Socket>();
}

std::vector<IPC_Endpoint> IPC_Network::Resolve(const std::string& host, std::uint16_t port) {
    tcp::resolver resolver(GetService());
    boost::system::error_code error;
    const auto results =
        resolver.resolve(host, std::to_string(port), tcp::resolver::numeric_service | tcp::resolver::passive, error);
    if (error) throw std::runtime_error("could not resolve " + host + ": " + error.message());
    std::vector<IPC_Endpoint> endpoints;
    for (const auto& result : results) {
        endpoints.push_back({result.endpoint().address().to_string(), result.endpoint().port()});
    }
    return endpoints;
}

}  // namespace qve
