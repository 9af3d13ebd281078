#pragma once

#include <string>
#include <vector>

#include "algebra/ColumnNames.h"
#include "algebra/Join.h"
#include "algebra/plan/FormatExp.h"
#include "algebra/plan/OperatorVisitorImpl.h"

namespace qve {

class Database;

/// Writes a plan in the language of plans, which NamespaceBuilder reads: one operator a line, each below the one that
/// reads it and indented deeper. On the thread that the plan belongs to.
class FormatNamespace : public OperatorVisitorImpl {
public:
    /// One operator. The text lacks the parentheses that close it and those above it that end here.
    struct Line {
        unsigned depth = 0;  // operators above it
        std::wstring text;
        const Namespace* node = nullptr;
        unsigned closed = 0;  // operators that end with this line
    };

    /// Tables of another database than `current` are written with its path. Raises 40296 for what has no form.
    static std::wstring Do(Namespace& plan, const Database* current = nullptr);
    /// The same line by line.
    static std::vector<Line> Lines(Namespace& plan, const Database* current = nullptr);

    /// The blanks before a line.
    static std::wstring Indent(unsigned depth);

    void VisitAggr(Aggr& table) override;
    void VisitAppend(Append& flow) override;
    void VisitCartProd(CartProd& flow) override;
    void VisitClusteringFlow(ClusteringFlow& flow) override;
    void VisitDictionaryTable(DictionaryTable& table) override;
    void VisitPartitionSplit(PartitionSplit& flow) override;
    void VisitPartitionRestart(PartitionRestart& flow) override;
    void VisitUpdate(Update& flow) override;
    void VisitCompact(Compact& flow) override;
    void VisitFlowTable(FlowTable& table) override;
    void VisitFractionTable(FractionTable& table) override;
    void VisitIndexJoin(IndexJoin& flow) override;
    void VisitIndexTable(IndexTable& table) override;
    void VisitJoin(Join& flow) override;
    void VisitLeafTable(LeafTable& table) override;
    void VisitOrdAggr(OrdAggr& flow) override;
    void VisitOrder(Order& table) override;
    void VisitPivot(Pivot& flow) override;
    void VisitPositionalJoin(PositionalJoin& table) override;
    void VisitProject(Project& flow) override;
    void VisitRestrict(Restrict& flow) override;
    void VisitScan(Scan& flow) override;
    void VisitSelect(Select& flow) override;
    void VisitSharedTable(SharedTable& table) override;
    void VisitTextScan(TextScan& flow) override;
    void VisitTopN(TopN& flow) override;

private:
    using ContextType = FormatExp::ContextType;

    explicit FormatNamespace(const Database* current) : m_current(current) {}

    /// One operator with what it does, from its line to the end of its sources.
    class Operator {
    public:
        Operator(FormatNamespace& format, const Namespace& node, std::wstring text);
        ~Operator();
        Operator(const Operator&) = delete;
        Operator& operator=(const Operator&) = delete;

    private:
        FormatNamespace& m_format;
    };

    static std::wstring Names(const ColumnNames& names);
    static std::wstring Names(const std::vector<std::wstring>& names);
    static std::wstring Pairs(const Join::NamePairs& pairs);
    static std::wstring Bindings(ContextType context, const std::vector<RefCntPtr<Exp>>& expressions);
    static std::wstring Sorts(const std::vector<Namespace::SortSpec>& specs, const std::vector<std::wstring>& ranks);

    const Database* const m_current;
    std::vector<Line> m_lines;
    unsigned m_depth = 0;
};

}  // namespace qve
