#pragma once

#include <cstdint>

namespace qve {

/// What a request asks for: the first word of its body.
enum class QVE_Command : std::uint32_t {
    Idle = 0xF1D3A400,  ///< marks a session that does nothing; never sent
    QueryExecute = 0xF1D3A403,
    StatementOpen = 0xF1D3A404,
    StatementPrepare = 0xF1D3A405,
    StatementExecute = 0xF1D3A406,
    StatementCancel = 0xF1D3A407,
    StatementEstimateProgress = 0xF1D3A408,
    StatementClose = 0xF1D3A409,
    RowsetGetValues = 0xF1D3A40A,
    RowsetClose = 0xF1D3A40B,
    InsertOpen = 0xF1D3A40C,
    InsertGetColumnProperties = 0xF1D3A40D,
    InsertPutValues = 0xF1D3A40E,
    InsertCommit = 0xF1D3A40F,
    InsertClose = 0xF1D3A410,
    DatabaseUploadOpen = 0xF1D3A411,
    UploadSetSize = 0xF1D3A412,
    UploadSend = 0xF1D3A413,
    UploadCommit = 0xF1D3A414,
    UploadClose = 0xF1D3A415,
    DatabaseDownloadOpen = 0xF1D3A416,
    DownloadRecv = 0xF1D3A417,
    DownloadClose = 0xF1D3A418,
    SessionOpen = 0xF1D3A419,
    SessionClose = 0xF1D3A41A,
    RowsetGetProperties = 0xF1D3A41B,
    StatementPlan = 0xF1D3A41C,
};

/// The command's name, "unknown command" for other numbers.
const char* QVE_CommandName(QVE_Command command) noexcept;

}  // namespace qve
