#include "tests/server/test_server.h"

#include <unistd.h>

#include <atomic>
#include <fstream>
#include <sstream>
#include <utility>

#include "server/qve_initialization.h"

namespace qve {
namespace {

const bool s_initialized = [] {
    qve_initialization();
    return true;
}();

}  // namespace

TestServer::TestServer(usrprops properties) {
    auto listener =
        IPC_Server::MakeServer(IPC_ConnectionDescriptor::Parse("quil.tcp://:auto"), false, nullptr, nullptr);
    m_descriptor = listener->GetDescriptor()->str();
    m_server = std::make_unique<QVE_Server>(std::move(listener), std::move(properties));
    m_pump = std::thread([this] {
        while (m_server->Pump()) {
        }
    });
}

TestServer::~TestServer() {
    m_server->Shutdown();
    m_pump.join();
}

RefCntPtr<QVE_Client> TestServer::Connect() const {
    auto client = MakeRef<QVE_Client>();
    client->Connect(m_descriptor);
    return client;
}

std::vector<std::string> RunQuery(QVE_Client& client, const std::string& text) {
    std::vector<std::string> rows;
    const RefCntPtr<QVE_ClientRowset> rowset = client.QueryExecute(text);
    if (!rowset) return rows;
    std::vector<QVE_Value> values(rowset->GetColumnCount());
    while (rowset->GetValues(values.size(), values.data()) != 0) {
        std::ostringstream row;
        for (const QVE_Value& value : values) row << (row.tellp() > 0 ? " " : "") << value;
        rows.push_back(row.str());
    }
    rowset->Close();
    return rows;
}

int StatusOf(QVE_Client& client, const std::string& text) {
    try {
        client.QueryExecute(text);
        return 0;
    } catch (const QuillonException& exception) {
        return exception.GetStatus();
    }
}

void MakeNumbers(QVE_Client& client, const ScratchFolder& directory, unsigned rows) {
    const std::string csv = directory / "numbers.csv";
    std::ofstream file(csv);
    file << "x\n";
    for (unsigned i = 0; i < rows; ++i) file << i << "\n";
    file.close();
    client.QueryExecute("(create database \"" + directory / "base" + "\")");
    client.QueryExecute("(connect \"" + directory / "base" + "\")");
    client.QueryExecute("(create schema [t])");
    client.QueryExecute("(create table-from-query [t].[n] (text \"" + csv + "\"))");
}

}  // namespace qve
