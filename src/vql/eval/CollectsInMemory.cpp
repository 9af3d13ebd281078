#include "vql/eval/CollectsInMemory.h"

#include "storage/stream/DataStream.h"
#include "vql/VQLDerivedFacts.h"
#include "vql/VQLFuncallExpression.h"
#include "vql/eval/VQLRowBound.h"

namespace qve {
namespace {

// A value and its group number while they come, and the values once more when they are put together by groups.
constexpr uint64_t bytesForValue = 20;
// A place of the hash table, of which half may be free, and an old one while it grows.
constexpr uint64_t bytesForDistinct = 48;
// Counts, means and sums of one group, twice while the list grows; every row may be a group.
constexpr uint64_t bytesForMoments = 144;

const VQLFuncallExpression* CallOf(const VQLBinding& measure, const wchar_t* function) {
    const auto* call = dynamic_cast<const VQLFuncallExpression*>(measure.second.get());
    return call && call->GetName() == function ? call : nullptr;
}

bool Fits(const DatabaseFamily& databases, const VQLAggregateQuery& query, uint64_t room) {
    return VQLRowBound(databases)(query.GetInput()) <= DataStream::GetMaxMemoryLimit() / 2 / room;
}

// Tokens tell texts apart where the catalog says that the dictionary has each text once.
bool HasDistinctCells(const RefCntPtr<VQLExpression>& value, const VQLColumnSpace& input) {
    if (value->GetDataType() != VQLDataType::string) return true;
    const VQLIdentifier* name = VQLPlainColumn(value);
    const VQLColumn* column = name ? input.FindColumn(*name) : nullptr;
    return column && column->HasProperty(usrpropkey::distinct);
}

}  // namespace

VQLKeepAggregate CollectsQuantiles(const DatabaseFamily& databases) {
    return [&databases](const VQLAggregateQuery& query) {
        uint64_t room = 0;
        for (const VQLBinding& measure : query.GetMeasures())
            if (CallOf(measure, L"quantile")) room += bytesForValue;
        return room == 0 || Fits(databases, query, room);
    };
}

VQLKeepAggregate FindsMoments(const DatabaseFamily& databases) {
    return [&databases](const VQLAggregateQuery& query) {
        uint64_t room = 0;
        for (const VQLBinding& measure : query.GetMeasures())
            for (const wchar_t* statistic : {L"var", L"varp", L"covar", L"covarp", L"corr"})
                if (CallOf(measure, statistic)) room += bytesForMoments;
        return room == 0 || query.GetGroupBys().empty() || Fits(databases, query, room);
    };
}

VQLKeepAggregate CountsDistinct(const DatabaseFamily& databases) {
    return [&databases](const VQLAggregateQuery& query) {
        uint64_t room = 0;
        for (const VQLBinding& measure : query.GetMeasures()) {
            if (CallOf(measure, L"collectd")) return false;
            const VQLFuncallExpression* call = CallOf(measure, L"countd");
            if (!call) continue;
            if (!HasDistinctCells(call->GetArguments()[0], *query.GetInput()->GetColumnSpace())) return false;
            room += bytesForDistinct;
        }
        return room == 0 || Fits(databases, query, room);
    };
}

}  // namespace qve
