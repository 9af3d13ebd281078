#include "vql/eval/ExplainPlan.h"

#include "algebra/Aggr.h"
#include "algebra/DataFlow.h"
#include "algebra/Join.h"
#include "algebra/LeafTable.h"
#include "algebra/plan/FormatNamespace.h"
#include "algebra/plan/NamespaceVisitor.h"
#include "commands/Listing.h"
#include "storage/Column.h"
#include "storage/Database.h"
#include "vql/eval/MeteredPlan.h"

namespace qve {
namespace {

// What is to be said of one operator.
class Notes : public NamespaceVisitor {
public:
    static std::wstring Of(const Namespace& node) {
        Notes notes;
        const_cast<Namespace&>(node).Accept(notes);
        return std::move(notes.m_text);
    }
    void VisitNamespace(Namespace&) override {}

    void VisitAggr(Aggr& table) override { m_text = table.GetGroupingName(); }
    void VisitJoin(Join& flow) override {
        if (flow.GetGrouping()) m_text = flow.GetGrouping()->GetName();
    }
    void VisitLeafTable(LeafTable& table) override {
        m_text = std::to_wstring(table.Build(Namespace::s_blockLength)) + L" rows;";
        for (const std::wstring& name : table.GetColumnNames()) {
            const RefCntPtr<Column> column = table.GetColumn(name);
            m_text += L" " + name + L" ";
            m_text += column->GetType()->name();
            for (const usrpropkey form : {usrpropkey::compression, usrpropkey::encoding}) {
                if (const std::wstring* value = column->GetProperties().get(form)) m_text += L"/" + *value;
            }
        }
    }

private:
    std::wstring m_text;
};

}  // namespace

ExplainPlan::ExplainPlan(RefCntPtr<Namespace> plan, const RefCntPtr<Database>& database, bool analyze)
    : m_plan(std::move(plan)),
      m_database(database),
      m_metered(analyze ? std::make_unique<MeteredPlan>(*m_plan, database) : nullptr) {}
ExplainPlan::~ExplainPlan() = default;

void ExplainPlan::Accept(OperatorVisitor& visitor) {
    (m_metered ? m_metered->GetRoot() : m_plan)->Accept(visitor);
}

RefCntPtr<Namespace> ExplainPlan::Execute(unsigned pageSize) {
    Namespace& plan = m_metered ? *m_metered->GetRoot() : *m_plan;
    if (m_metered) {
        const auto flow = DynamicPtrCast<DataFlow>(m_metered->GetRoot());
        while (flow && flow->Next(pageSize) > 0) {
        }
    }
    std::vector<std::wstring> operators, notes;
    std::vector<long long> rows;
    std::vector<double> milliseconds;
    for (const FormatNamespace::Line& line : FormatNamespace::Lines(plan, m_database.get())) {
        operators.push_back(FormatNamespace::Indent(line.depth) + line.text.substr(1));
        notes.push_back(Notes::Of(*line.node));
        if (!m_metered) continue;
        const MeteredPlan::Meter& meter = *m_metered->GetMeters()[rows.size()];
        rows.push_back(static_cast<long long>(meter.rows));
        milliseconds.push_back(meter.seconds * 1000);
    }
    Listing listing(L"PLAN", Listing::Names::plain);
    listing.AddTexts(L"OPERATOR", operators);
    listing.AddTexts(L"NOTE", notes);
    if (m_metered) {
        listing.AddNumbers(L"ROWS", rows);
        listing.AddFigures(L"MS", milliseconds);
    }
    return listing.Finish();
}

}  // namespace qve
