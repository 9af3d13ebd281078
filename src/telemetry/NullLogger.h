#pragma once

#include "telemetry/Logger.h"

namespace qve {

/// Drops everything.
class NullLogger final : public Logger {
public:
    void Run() override {}
    void QueueMessage(std::wistream&) override {}
    void QueueMessage(std::istream&) override {}
    void QueueMessage(const std::wstring&) override {}
    void QueueMessage(const std::string&) override {}
    void Flush() override {}
    void QueueStop() override {}
    const std::wstring& GetBaseFilePath() const override { return m_path; }
    bool IsWritten() const override { return false; }

private:
    std::wstring m_path;
};

}  // namespace qve
