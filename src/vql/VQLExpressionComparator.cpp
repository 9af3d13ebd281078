#include "vql/VQLExpressionComparator.h"

#include "vql/VQLExpressions.h"

namespace qve {

namespace {

template <class T>
int ThreeWay(const T& a, const T& b) {
    return a < b ? -1 : b < a ? 1 : 0;
}

/// Where the kind of an expression stands in the order of kinds.
class TypeRanker : private VQLExpressionVisitor {
public:
    int GetTypeRank(VQLExpression& expression) {
        expression.Accept(*this);
        return m_rank;
    }

private:
    void VisitLiteral(VQLLiteralExpression&) override { m_rank = 1; }
    void VisitIdentifier(VQLIdentifierExpression&) override { m_rank = 2; }
    void VisitFuncall(VQLFuncallExpression&) override { m_rank = 3; }
    void VisitCase(VQLCaseExpression&) override { m_rank = 4; }

    int m_rank = 0;
};

/// Compares the expression it visits with another of the same kind.
class SameKind : private VQLExpressionVisitor {
public:
    explicit SameKind(const VQLExpression& other) : m_other(other) {}
    int operator()(VQLExpression& expression) {
        expression.Accept(*this);
        return m_result;
    }

private:
    void VisitLiteral(VQLLiteralExpression& a) override {
        const auto& b = static_cast<const VQLLiteralExpression&>(m_other);
        m_result = cmp(a.GetLiteral(), b.GetLiteral());
        // Literals that carry types are all nulls: they differ when the types do. So do strings of two collations.
        if (m_result == 0) m_result = ThreeWay(a.GetType(), b.GetType());
        if (m_result == 0)
            m_result =
                ThreeWay(a.GetUsrProps().text(usrpropkey::collation), b.GetUsrProps().text(usrpropkey::collation));
    }
    void VisitIdentifier(VQLIdentifierExpression& a) override {
        m_result = ThreeWay(a.GetIdentifier(), static_cast<const VQLIdentifierExpression&>(m_other).GetIdentifier());
    }
    void VisitFuncall(VQLFuncallExpression& a) override {
        const auto& b = static_cast<const VQLFuncallExpression&>(m_other);
        m_result = ThreeWay(a.GetName(), b.GetName());
        if (m_result == 0) m_result = Compare(a.GetArguments(), b.GetArguments());
    }
    void VisitCase(VQLCaseExpression& a) override {
        m_result = Compare(a.GetArguments(), static_cast<const VQLCaseExpression&>(m_other).GetArguments());
    }

    static int Compare(const VQLExpressions& a, const VQLExpressions& b) {
        int result = ThreeWay(a.size(), b.size());
        for (size_t i = 0; result == 0 && i < a.size(); ++i) result = VQLExpressionComparator()(a[i], b[i]);
        return result;
    }

    const VQLExpression& m_other;
    int m_result = -2;
};

}  // namespace

int VQLExpressionComparator::operator()(const RefCntPtr<VQLExpression>& a, const RefCntPtr<VQLExpression>& b) const {
    if (a == b) return 0;
    TypeRanker ranker;
    const int byKind = ThreeWay(ranker.GetTypeRank(*a), ranker.GetTypeRank(*b));
    return byKind != 0 ? byKind : SameKind(*b)(*a);
}

}  // namespace qve
