#pragma once

#include <fstream>
#include <string>
#include <string_view>

#include "vql/VQLQuery.h"

namespace qve {

/// Writes the stages of one evaluation to the stage log: the name of each pass and the query as the pass has left it.
/// Does nothing when stage logging is off. Concurrent evaluations interleave in the file.
class VQLQueryEvaluatorLogger {
public:
    /// Opens the file that the settings name, when they ask for a log.
    VQLQueryEvaluatorLogger();

    /// `name` and the query's text, or `name` and " (UNCHANGED) " when the text is that of the stage before.
    void LogStage(std::string_view name, const RefCntPtr<VQLQuery>& query);
    /// A note between stages.
    void LogNote(std::string_view name, const std::wstring& text);
    explicit operator bool() const { return m_file.is_open(); }

private:
    std::ofstream m_file;
    bool m_withProperties = false;
    std::wstring m_last;
};

}  // namespace qve
