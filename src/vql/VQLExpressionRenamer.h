#pragma once

#include "vql/VQLColumnMap.h"
#include "vql/VQLExpressionCloner.h"
#include "vql/VQLExpressions.h"

namespace qve {

/// Copies expressions with their columns renamed; columns without a mapping keep their names.
class VQLExpressionRenamer : public VQLExpressionCloner {
public:
    /// `columns` must outlive the renamer.
    VQLExpressionRenamer(SymbolDictionary& dictionary, const VQLColumnMap& columns)
        : VQLExpressionCloner(dictionary), m_columns(columns) {}

    RefCntPtr<VQLExpression> VisitIdentifier(const VQLIdentifierExpression& expression) override {
        auto renamed = MakeRef<VQLIdentifierExpression>(expression.GetPosition(),
                                                        m_columns.PartialMap(expression.GetIdentifier()));
        CopyProperties(expression, *renamed);
        return renamed;
    }

private:
    const VQLColumnMap& m_columns;
};

}  // namespace qve
