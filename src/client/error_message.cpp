#include "client/error_message.h"

#include "client/status.h"

namespace qve {
namespace {

constexpr int s_diskFull = 100;
constexpr int s_cancelled = 50000;
constexpr int s_firstOfStatements = 48000;
constexpr int s_lastOfStatements = 49999;

}  // namespace

std::string GetErrorMessage(int status, const std::string& text) {
    if (!text.empty()) return text;
    if (status == s_cancelled) return "the statement was cancelled";
    return "status " + std::to_string(status);
}

bool IsActionableError(int status) {
    return (status >= s_firstOfStatements && status <= s_lastOfStatements) || status == s_diskFull ||
           status == s_cancelled || status == status::Client_Network || status == status::Client_NotConnected ||
           status == status::QVE_ServerProcess_Launch || status == status::QVE_ServerProcess_CallBack;
}

}  // namespace qve
