#include "vql/eval/CollectsInMemory.h"

#include <algorithm>

#include "storage/stream/DataStream.h"
#include "vql/VQLFuncallExpression.h"
#include "vql/eval/VQLRowBound.h"

namespace qve {
namespace {

// A value and its group number while they come, and the values once more when they are put together by groups.
constexpr uint64_t bytesForValue = 20;

bool IsQuantile(const VQLBinding& measure) {
    const auto* call = dynamic_cast<const VQLFuncallExpression*>(measure.second.get());
    return call && call->GetName() == L"quantile";
}

}  // namespace

VQLKeepAggregate CollectsInMemory(const DatabaseFamily& databases) {
    return [&databases](const VQLAggregateQuery& query) {
        const auto quantiles =
            static_cast<uint64_t>(std::count_if(query.GetMeasures().begin(), query.GetMeasures().end(), IsQuantile));
        const uint64_t rows = VQLRowBound(databases)(query.GetInput());
        return rows <= DataStream::GetMaxMemoryLimit() / 2 / bytesForValue / std::max<uint64_t>(quantiles, 1);
    };
}

}  // namespace qve
