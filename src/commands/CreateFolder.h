#pragma once

#include "commands/Statement.h"

namespace qve {

/// Makes a folder of the file system; one that is there already is no failure.
class CreateFolder : public Statement {
public:
    CreateFolder(std::wstring path, bool parents);

    void Accept(OperatorVisitor& visitor) override;
    RefCntPtr<Namespace> Execute(unsigned pageSize) override;

    const std::wstring& GetPath() const { return m_path; }

private:
    const std::wstring m_path;
    const bool m_parents;
};

}  // namespace qve
