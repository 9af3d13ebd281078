#include "commands/SettingsCommand.h"

#include <vector>

#include "algebra/OperatorVisitor.h"
#include "commands/Listing.h"
#include "commands/settingsRegistry.h"
#include "commands/status.h"
#include "system/QuillonException.h"

namespace qve {
namespace {

class ReturnSet {
public:
    explicit ReturnSet(std::wstring table) : m_listing(std::move(table), Listing::Names::plain) {}

    void Append(const Setting& setting) {
        m_names.emplace_back(setting.name);
        m_values.push_back(setting.GetText());
    }
    RefCntPtr<Namespace> Finish() {
        m_listing.AddTexts(L"Name", m_names);
        m_listing.AddTexts(L"Value", m_values);
        return m_listing.Finish();
    }

private:
    Listing m_listing;
    std::vector<std::wstring> m_names, m_values;
};

}  // namespace

const std::wstring SettingsCommand::actionSet = L"set";
const std::wstring SettingsCommand::actionShow = L"show";
const std::wstring SettingsCommand::scopeGlobal = L"global";

SettingsCommand::SettingsCommand(std::wstring action, std::wstring scope, std::wstring name, VQLDataValue value)
    : m_action(std::move(action)), m_scope(std::move(scope)), m_name(std::move(name)), m_value(std::move(value)) {}

void SettingsCommand::Accept(OperatorVisitor& visitor) {
    visitor.VisitSettingsCommand(*this);
}

RefCntPtr<Namespace> SettingsCommand::Execute(unsigned pageSize) {
    if (m_action == actionShow) return ExecuteShow(pageSize);
    if (m_action == actionSet) return ExecuteSet(pageSize);
    throw QVE_LogicError(status::SettingsCommand_action, "SettingsCommand::Execute: unknown action");
}

RefCntPtr<Namespace> SettingsCommand::ExecuteShow(unsigned) const {
    ReturnSet result(L"SHOW");
    if (m_name.empty()) {
        for (const Setting& setting : settingsRegistry()) result.Append(setting);
    } else {
        result.Append(FindSetting(m_name));
    }
    return result.Finish();
}

RefCntPtr<Namespace> SettingsCommand::ExecuteSet(unsigned) const {
    if (m_value.IsNull()) {
        throw QVE_RuntimeError(status::SettingsCommand_missing, "Missing value for operator (settings set <value>)");
    }
    const Setting& setting = FindSetting(m_name);
    setting.Set(m_value);
    ReturnSet result(L"SET");
    result.Append(setting);
    return result.Finish();
}

}  // namespace qve
