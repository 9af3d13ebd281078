#pragma once

#include <string>

#include "commands/Statement.h"
#include "vql/syntax/VQLDataValue.h"

namespace qve {

/// Reads or changes the process-wide settings. A change holds for what starts after it, in every session.
class SettingsCommand : public Statement {
public:
    static const std::wstring actionSet;    ///< "set"
    static const std::wstring actionShow;   ///< "show"
    static const std::wstring scopeGlobal;  ///< "global", the only scope

    /// @param name the setting; with the action "show" an empty one stands for all of them
    /// @param value of the action "set"; a null is missing
    SettingsCommand(std::wstring action, std::wstring scope, std::wstring name, VQLDataValue value);

    void Accept(OperatorVisitor& visitor) override;
    /// A table of "Name" and "Value": of the settings asked for, or of the one that was changed. Throws
    /// QVE_RuntimeError for an unknown setting and for a value that it does not take; QVE_LogicError (40607) for an
    /// unknown action.
    RefCntPtr<Namespace> Execute(unsigned pageSize) override;

private:
    RefCntPtr<Namespace> ExecuteShow(unsigned pageSize) const;
    RefCntPtr<Namespace> ExecuteSet(unsigned pageSize) const;

    const std::wstring m_action;
    const std::wstring m_scope;
    const std::wstring m_name;
    const VQLDataValue m_value;
};

}  // namespace qve
