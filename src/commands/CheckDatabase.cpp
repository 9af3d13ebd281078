#include "commands/CheckDatabase.h"

#include "algebra/OperatorVisitor.h"
#include "algebra/ProgressCallbackImpl.h"
#include "commands/Listing.h"
#include "metrics/Scope.h"
#include "storage/DatabaseCheck.h"

namespace qve {

CheckDatabase::CheckDatabase(std::wstring path, Options options)
    : m_path(std::move(path)), m_options(std::move(options)), m_progress(MakeRef<ProgressCallbackImpl>()) {}

void CheckDatabase::Accept(OperatorVisitor& visitor) {
    visitor.VisitCheckDatabase(*this);
}

RefCntPtr<Namespace> CheckDatabase::Execute(unsigned) {
    Metrics::Scope scope("CheckDatabase::Execute");
    DatabaseCheck check(m_path, m_progress);
    check.Verify();
    if (!m_options.salvage.empty()) check.Salvage(m_options.salvage);
    if (m_options.removeLeftovers) check.RemoveLeftovers();

    std::vector<std::wstring> kinds, places, findings;
    for (const DatabaseCheck::Finding& finding : check.GetFindings()) {
        kinds.emplace_back(DatabaseCheck::NameOf(finding.kind));
        places.push_back(finding.place);
        findings.push_back(finding.text);
    }
    kinds.emplace_back(DatabaseCheck::NameOf(DatabaseCheck::Kind::note));
    places.push_back(m_path);
    findings.push_back(std::to_wstring(check.GetTables()) + L" tables, " + std::to_wstring(check.GetColumns()) +
                       L" columns");
    Listing listing(L"CHECK");
    listing.AddTexts(L"KIND", kinds);
    listing.AddTexts(L"PLACE", places);
    listing.AddTexts(L"FINDING", findings);
    return listing.Finish();
}

}  // namespace qve
