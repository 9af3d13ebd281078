#include "vql/VQLRemoveRestricts.h"

#include "metrics/Scope.h"
#include "vql/VQLQueries.h"
#include "vql/VQLQueryCloner.h"

namespace qve {
namespace {

class RestrictRemover : public VQLQueryCloner {
public:
    using VQLQueryCloner::VQLQueryCloner;
    RefCntPtr<VQLQuery> VisitRestrict(const VQLRestrictQuery& query) override { return Clone(query.GetInput()); }
};

}  // namespace

RefCntPtr<VQLQuery> VQLRemoveRestricts(SymbolDictionary& dictionary, const RefCntPtr<VQLQuery>& query) {
    Metrics::Scope scope("VQLRemoveRestricts");
    return RestrictRemover(dictionary)(query);
}

}  // namespace qve
