#pragma once

#include <functional>
#include <string>

#include "algebra/plan/OperatorVisitorImpl.h"

namespace qve {

/// Says what a finished definition statement has done.
class ExecMessage : public OperatorVisitorImpl {
public:
    explicit ExecMessage(std::function<void(const std::wstring&)> message) : m_message(std::move(message)) {}

    void VisitCreateColumn(CreateColumn& statement) override;
    void VisitCreateDatabase(CreateDatabase& statement) override;
    void VisitCreateFolder(CreateFolder& statement) override;
    void VisitCreateSchema(CreateSchema& statement) override;
    void VisitCreateTable(CreateTable& statement) override;
    void VisitDropColumn(DropColumn& statement) override;
    void VisitDropDatabase(DropDatabase& statement) override;
    void VisitDropFolder(DropFolder& statement) override;
    void VisitDropSchema(DropSchema& statement) override;
    void VisitDropTable(DropTable& statement) override;

private:
    std::function<void(const std::wstring&)> m_message;
};

}  // namespace qve
