#include "vql/eval/MeteredPlan.h"

#include "algebra/DataFlow.h"
#include "algebra/DelegatedTable.h"
#include "algebra/plan/FormatNamespace.h"
#include "algebra/plan/NamespaceBuilder.h"
#include "os/Timer.h"
#include "storage/Database.h"
#include "vql/syntax/VQLParser.h"

namespace qve {
namespace {

using Meter = MeteredPlan::Meter;

// Adds the time until its end.
class Stopwatch {
public:
    explicit Stopwatch(Meter& meter) : m_meter(meter), m_timer(true) {}
    ~Stopwatch() { m_meter.seconds += m_timer.ElapsedSec(); }
    Stopwatch(const Stopwatch&) = delete;
    Stopwatch& operator=(const Stopwatch&) = delete;

private:
    Meter& m_meter;
    const Timer m_timer;
};

// Visitors see the flow below.
class MeteredFlow : public DataFlow {
public:
    MeteredFlow(const RefCntPtr<DataFlow>& flow, Meter& meter)
        : DataFlow(flow, flow->GetColumnNames()), m_meter(meter) {}
    void Accept(OperatorVisitor& visitor) override { m_source->Accept(visitor); }
    unsigned Next(unsigned pageSize) override {
        const Stopwatch watch(m_meter);
        const unsigned extent = DataFlow::Next(pageSize);
        m_meter.rows += m_selectionCount;
        return extent;
    }

private:
    Meter& m_meter;
};

class MeteredTable : public DelegatedTable {
public:
    MeteredTable(RefCntPtr<Table> table, Meter& meter) : DelegatedTable(std::move(table)), m_meter(meter) {}
    uint64_t Build(unsigned pageSize) override {
        const Stopwatch watch(m_meter);
        return m_meter.rows = DelegatedTable::Build(pageSize);
    }

private:
    Meter& m_meter;
};

class Builder : public NamespaceBuilder {
public:
    Builder(const RefCntPtr<Database>& database, std::vector<std::unique_ptr<Meter>>& meters)
        : NamespaceBuilder(database), m_meters(meters) {}

private:
    RefCntPtr<Namespace> Finish(RefCntPtr<Namespace> built, unsigned number) override {
        while (m_meters.size() <= number) m_meters.push_back(std::make_unique<Meter>());
        Meter& meter = *m_meters[number];
        if (auto flow = DynamicPtrCast<DataFlow>(built)) return MakeRef<MeteredFlow>(flow, meter);
        return MakeRef<MeteredTable>(StaticPtrCast<Table>(built), meter);
    }

    std::vector<std::unique_ptr<Meter>>& m_meters;
};

}  // namespace

MeteredPlan::MeteredPlan(Namespace& plan, const RefCntPtr<Database>& database) {
    const std::wstring text = FormatNamespace::Do(plan, database.get());
    SymbolDictionary dictionary;
    m_root = Builder(database, m_meters)(
        VQLParser::ParseAndReturnFirstNode(dictionary, text.c_str(), true, [](RefCntPtr<VQLNode>) {}));
}

}  // namespace qve
