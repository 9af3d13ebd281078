#include "vql/eval/ExecMessage.h"

#include "commands/CreateColumn.h"
#include "commands/CreateDatabase.h"
#include "commands/CreateFolder.h"
#include "commands/CreateSchema.h"
#include "commands/CreateTable.h"
#include "commands/DropColumn.h"
#include "commands/DropDatabase.h"
#include "commands/DropFolder.h"
#include "commands/DropSchema.h"
#include "commands/DropTable.h"
#include "storage/Database.h"

namespace qve {

void ExecMessage::VisitCreateColumn(CreateColumn& statement) {
    m_message(L"Created column: " + statement.GetName());
}
void ExecMessage::VisitCreateDatabase(CreateDatabase& statement) {
    m_message(statement.GetDatabase()->GetRoot());
}
void ExecMessage::VisitCreateFolder(CreateFolder& statement) {
    m_message(L"Created folder: " + statement.GetPath());
}
void ExecMessage::VisitCreateSchema(CreateSchema& statement) {
    m_message(L"Created schema: " + statement.GetName());
}
void ExecMessage::VisitCreateTable(CreateTable& statement) {
    m_message(L"Created table: " + statement.GetName());
}
void ExecMessage::VisitDropColumn(DropColumn& statement) {
    m_message(L"Dropped column: " + statement.GetName());
}
void ExecMessage::VisitDropDatabase(DropDatabase& statement) {
    m_message(L"Dropped database: '" + statement.GetPath());
}
void ExecMessage::VisitDropFolder(DropFolder& statement) {
    m_message(L"Dropped folder: " + statement.GetPath());
}
void ExecMessage::VisitDropSchema(DropSchema& statement) {
    m_message(L"Dropped schema: " + statement.GetName());
}
void ExecMessage::VisitDropTable(DropTable& statement) {
    m_message(L"Dropped table: " + statement.GetName());
}

}  // namespace qve
