#include "vql/VQLRemoveTrivialProjectBindings.h"

#include "metrics/Scope.h"
#include "vql/VQLExpressions.h"
#include "vql/VQLQueries.h"
#include "vql/VQLQueryCloner.h"

namespace qve {
namespace {

bool IsTrivial(const VQLBinding& binding) {
    const auto* column = dynamic_cast<const VQLIdentifierExpression*>(binding.second.get());
    return column && column->GetIdentifier() == binding.first;
}

class TrivialBindingRemover : public VQLQueryCloner {
public:
    using VQLQueryCloner::VQLQueryCloner;
    RefCntPtr<VQLQuery> VisitProject(const VQLProjectQuery& query) override {
        RefCntPtr<VQLQuery> input = Clone(query.GetInput());
        VQLBindings bindings = Clone(query.GetBindings());
        std::erase_if(bindings, IsTrivial);
        if (bindings.empty()) return input;
        return MakeRef<VQLProjectQuery>(query.GetPosition(), std::move(input), std::move(bindings));
    }
};

}  // namespace

RefCntPtr<VQLQuery> VQLRemoveTrivialProjectBindings(SymbolDictionary& dictionary, const RefCntPtr<VQLQuery>& query) {
    Metrics::Scope scope("VQLRemoveTrivialProjectBindings");
    return TrivialBindingRemover(dictionary)(query);
}

}  // namespace qve
