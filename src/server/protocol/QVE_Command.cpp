#include "server/protocol/QVE_Command.h"

namespace qve {

const char* QVE_CommandName(QVE_Command command) noexcept {
    switch (command) {
        case QVE_Command::Idle:
            return "Idle";
        case QVE_Command::QueryExecute:
            return "QueryExecute";
        case QVE_Command::StatementOpen:
            return "StatementOpen";
        case QVE_Command::StatementPrepare:
            return "StatementPrepare";
        case QVE_Command::StatementExecute:
            return "StatementExecute";
        case QVE_Command::StatementCancel:
            return "StatementCancel";
        case QVE_Command::StatementEstimateProgress:
            return "StatementEstimateProgress";
        case QVE_Command::StatementClose:
            return "StatementClose";
        case QVE_Command::RowsetGetValues:
            return "RowsetGetValues";
        case QVE_Command::RowsetClose:
            return "RowsetClose";
        case QVE_Command::InsertOpen:
            return "InsertOpen";
        case QVE_Command::InsertGetColumnProperties:
            return "InsertGetColumnProperties";
        case QVE_Command::InsertPutValues:
            return "InsertPutValues";
        case QVE_Command::InsertCommit:
            return "InsertCommit";
        case QVE_Command::InsertClose:
            return "InsertClose";
        case QVE_Command::DatabaseUploadOpen:
            return "DatabaseUploadOpen";
        case QVE_Command::UploadSetSize:
            return "UploadSetSize";
        case QVE_Command::UploadSend:
            return "UploadSend";
        case QVE_Command::UploadCommit:
            return "UploadCommit";
        case QVE_Command::UploadClose:
            return "UploadClose";
        case QVE_Command::DatabaseDownloadOpen:
            return "DatabaseDownloadOpen";
        case QVE_Command::DownloadRecv:
            return "DownloadRecv";
        case QVE_Command::DownloadClose:
            return "DownloadClose";
        case QVE_Command::SessionOpen:
            return "SessionOpen";
        case QVE_Command::SessionClose:
            return "SessionClose";
        case QVE_Command::RowsetGetProperties:
            return "RowsetGetProperties";
        case QVE_Command::StatementPlan:
            return "StatementPlan";
    }
    return "unknown command";
}

}  // namespace qve
