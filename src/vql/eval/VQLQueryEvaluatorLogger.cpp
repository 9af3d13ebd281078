#include "vql/eval/VQLQueryEvaluatorLogger.h"

#include "system/unicode.h"
#include "vql/VQLQueryFormatter.h"
#include "vql/syntax/VQLEvaluatorSettings.h"

namespace qve {

VQLQueryEvaluatorLogger::VQLQueryEvaluatorLogger() {
    if (!VQLEvaluatorSettings::GetOptimizationLogging()) return;
    m_withProperties = VQLEvaluatorSettings::GetOptimizationPropertiesLogging();
    const bool truncate = VQLEvaluatorSettings::GetTruncateOptimizationLog();
    m_file.open(VQLEvaluatorSettings::GetOptimizationLogPath(), truncate ? std::ios::trunc : std::ios::app);
}

void VQLQueryEvaluatorLogger::LogStage(std::string_view name, const RefCntPtr<VQLQuery>& query) {
    if (!*this) return;
    std::wstring text = FormatQuery(query, m_withProperties);
    if (text == m_last) {
        m_file << name << " (UNCHANGED) \n";
    } else {
        m_file << name << '\n' << narrow(text) << '\n';
        m_last = std::move(text);
    }
}

void VQLQueryEvaluatorLogger::LogNote(std::string_view name, const std::wstring& text) {
    if (*this) m_file << name << '\n' << narrow(text) << '\n';
}

}  // namespace qve
