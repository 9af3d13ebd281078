#pragma once

#include "commands/Statement.h"

namespace qve {

/// Removes a folder of the file system.
class DropFolder : public Statement {
public:
    static constexpr unsigned cascade = 1;  ///< with all that is in it
    static constexpr unsigned parents = 2;  ///< and its parents, as long as they are empty

    DropFolder(std::wstring path, unsigned options);

    void Accept(OperatorVisitor& visitor) override;
    RefCntPtr<Namespace> Execute(unsigned pageSize) override;

    const std::wstring& GetPath() const { return m_path; }

private:
    const std::wstring m_path;
    const unsigned m_options;
};

}  // namespace qve
