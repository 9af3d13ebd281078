#include "vql/VQLRewriteCountd.h"

#include <algorithm>

#include "metrics/Scope.h"
#include "vql/VQLExpressionComparator.h"
#include "vql/VQLExpressions.h"
#include "vql/VQLSharedBindings.h"
#include "vql/status.h"
#include "vql/syntax/VQLIdentifierFactory.h"

namespace qve {
namespace {

bool IsColumn(const VQLExpression& expression) {
    return dynamic_cast<const VQLIdentifierExpression*>(&expression) != nullptr;
}

// What the upper of two aggregates does with the results of the lower one; null for a function that cannot be split.
const wchar_t* UpperFunction(const std::wstring& lower) {
    if (lower == L"count" || lower == L"sum") return L"sum";
    for (const wchar_t* same : {L"total", L"min", L"max", L"any", L"anyif"})
        if (lower == same) return same;
    return nullptr;
}

class RewriteQueries : public VQLAggregateRewriter {
public:
    RewriteQueries(VQLIdentifierFactory& factory, const VQLKeepAggregate& keep)
        : VQLAggregateRewriter(factory, {L"countd", L"collectd"}, keep) {}

private:
    // The measures that are computed by one aggregate over the input, or by a pair of them.
    struct Part {
        RefCntPtr<VQLExpression> distinct;  // null for measures without distinct values
        VQLBindings measures;
    };

    RefCntPtr<VQLQuery> Rewrite(RefCntPtr<VQLQuery> input, const VQLBindings& groupBys,
                                const VQLBindings& measures) override {
        // A value that is no column is made one: the lower aggregate groups by it.
        VQLSharedBindings values(GetFactory());
        VQLBindings columns;
        for (const auto& [name, expression] : measures) {
            if (!IsOfKind({name, expression}) || IsColumn(*Distinct(expression))) {
                columns.emplace_back(name, expression);
                continue;
            }
            const auto& call = static_cast<const VQLFuncallExpression&>(*expression);
            columns.emplace_back(name, Call(call.GetName().c_str(), {Column(values.NameOf(Distinct(expression)))}));
        }
        input = Project(std::move(input), values.Get());

        RefCntPtr<VQLQuery> result;
        for (const Part& part : SplitByDistinct(columns)) {
            RefCntPtr<VQLQuery> rewritten =
                part.distinct ? RewriteAggregate(input, groupBys, part) : Aggregate(input, groupBys, part.measures);
            result = result ? JoinGroups(std::move(result), std::move(rewritten), groupBys, part.measures)
                            : std::move(rewritten);
        }
        return result;
    }
    size_t CountUses(const VQLBindings& measures) const override { return SplitByDistinct(measures).size(); }

    static const RefCntPtr<VQLExpression>& Distinct(const RefCntPtr<VQLExpression>& measure) {
        return static_cast<const VQLFuncallExpression&>(*measure).GetArguments()[0];
    }

    // One part for each distinct expression. The first takes the measures of other kinds along, if all can be split.
    std::vector<Part> SplitByDistinct(const VQLBindings& measures) const {
        std::vector<Part> parts;
        VQLBindings others;
        for (const VQLBinding& measure : measures) {
            if (!IsOfKind(measure)) {
                others.push_back(measure);
                continue;
            }
            const RefCntPtr<VQLExpression>& distinct = Distinct(measure.second);
            auto part = std::find_if(parts.begin(), parts.end(), [&distinct](const Part& known) {
                return VQLExpressionComparator()(known.distinct, distinct) == 0;
            });
            if (part == parts.end()) part = parts.insert(parts.end(), {distinct, {}});
            part->measures.push_back(measure);
        }
        const bool split = std::all_of(others.begin(), others.end(), [](const VQLBinding& measure) {
            return UpperFunction(CallOf(measure).GetName()) != nullptr;
        });
        if (split) {
            parts[0].measures.insert(parts[0].measures.begin(), others.begin(), others.end());
        } else {
            parts.push_back({nullptr, std::move(others)});
        }
        return parts;
    }

    RefCntPtr<VQLQuery> RewriteAggregate(const RefCntPtr<VQLQuery>& input, const VQLBindings& groupBys,
                                         const Part& part) const {
        const VQLIdentifier& value = static_cast<const VQLIdentifierExpression&>(*part.distinct).GetIdentifier();
        VQLBindings lowerKeys = groupBys;
        const bool isKey = std::any_of(groupBys.begin(), groupBys.end(),
                                       [&value](const VQLBinding& groupBy) { return groupBy.first == value; });
        if (!isKey) lowerKeys.emplace_back(value, part.distinct);
        VQLSharedBindings lower(GetFactory());
        VQLBindings upper;
        for (const VQLBinding& measure : part.measures)
            upper.emplace_back(measure.first, SplitAggregate(measure, lower));
        return Aggregate(Aggregate(input, std::move(lowerKeys), lower.Get()), groupBys, std::move(upper));
    }

    // The measure in terms of the lower aggregate, to which it adds what it needs.
    RefCntPtr<VQLExpression> SplitAggregate(const VQLBinding& measure, VQLSharedBindings& lower) const {
        const VQLFuncallExpression& call = CallOf(measure);
        if (call.GetName() == L"countd") return Call(L"count", call.GetArguments());
        if (call.GetName() == L"collectd") return Call(L"collect", call.GetArguments());
        const wchar_t* function = UpperFunction(call.GetName());
        if (!function) throw VQLException(status::VQLRewriteCountd_Unknown, L"unknown measure");
        VQLExpressions arguments{Column(lower.NameOf(measure.second))};
        if (call.GetName() == L"anyif") {
            // Whether any row of the lower group had a value to give.
            arguments.push_back(Column(lower.NameOf(Call(L"max", {call.GetArguments()[1]}))));
        }
        return Call(function, std::move(arguments));
    }
};

}  // namespace

RefCntPtr<VQLQuery> VQLRewriteCountd(VQLIdentifierFactory& factory, const RefCntPtr<VQLQuery>& query,
                                     const VQLKeepAggregate& keep) {
    Metrics::Scope scope("VQLRewriteQuantiles");
    return RewriteQueries(factory, keep)(query);
}

}  // namespace qve
