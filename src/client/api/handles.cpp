#include "client/api/handles.h"

#include <new>
#include <stdexcept>

#include "client/QVE_ServerError.h"
#include "client/error_message.h"
#include "client/status.h"
#include "system/QuillonException.h"

namespace qve::api {

static_assert(status::Client_Argument == QVE_ERROR_ARGUMENT);
static_assert(status::Client_Unexpected == QVE_ERROR_OUT_OF_MEMORY);
static_assert(status::Client_NotConnected == QVE_ERROR_NOT_CONNECTED);
static_assert(status::Client_Network == QVE_ERROR_NETWORK);

QVE_Status ReportException(const std::function<void(int status, std::vector<std::string> texts)>& report) noexcept {
    QVE_Status status = QVE_ERROR_OUT_OF_MEMORY;
    try {
        std::vector<std::string> texts;
        try {
            throw;
        } catch (const QVE_ServerError& exception) {
            status = exception.GetStatus();
            texts = exception.GetTexts();
        } catch (const QuillonException& exception) {
            status = exception.GetStatus();
            texts = {exception.GetText()};
        } catch (const std::invalid_argument& exception) {
            status = QVE_ERROR_ARGUMENT;
            texts = {exception.what()};
        } catch (const std::exception& exception) {
            texts = {exception.what()};
        }
        if (texts.empty() || texts.front().empty()) texts = {GetErrorMessage(status, {})};
        if (report) report(status, std::move(texts));
    } catch (...) {
        // No memory for the texts: the status tells what it can.
    }
    return status;
}

void CheckIndex(std::size_t index, std::size_t count) {
    if (index >= count) throw QVE_LogicError(status::Client_Index, "index out of range");
}

}  // namespace qve::api
