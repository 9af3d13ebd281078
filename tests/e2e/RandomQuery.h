#pragma once

#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace qve::test {

enum class RandomType { integer, real, text, date, boolean };

/// A column of a random query, with what is known of its values.
struct RandomColumn {
    enum Grade {
        dyadic,         ///< exact, and so are sums
        deterministic,  ///< the same in every engine, but sums of them depend on their order
        inexact         ///< may differ in the last digits
    };

    std::string name;
    RandomType type = RandomType::integer;
    Grade grade = dyadic;
    double most = 0;  ///< of a number, the greatest amount
};

/// A stored table.
struct RandomSource {
    std::string name;
    std::vector<RandomColumn> columns;
    uint64_t rows = 0;
    bool loaded = true;  ///< from a text, so that its dictionaries hold nothing but what its rows do
};

/// One query in VQL and in SQL.
struct RandomQuery {
    std::string vql;
    std::string sql;
    std::vector<RandomColumn> columns;  ///< in the order in which `sql` gives them; `vql` may give them in another
    double most = 0;                    ///< rows at most
    bool ordered = false;               ///< the rows come in one certain order
    /// The queries it is made of, for the search of the least one that fails.
    std::vector<std::shared_ptr<const RandomQuery>> inputs;

    /// The query with its columns in the order of `columns`.
    std::string RestrictedVql() const;
};

/// Makes random queries over tables of the schema [r].
class RandomQueryMaker {
public:
    RandomQueryMaker(const std::vector<RandomSource>& sources, std::mt19937& random)
        : m_sources(sources), m_random(random) {}

    /// A query of up to `depth` operators above each other.
    RandomQuery Make(unsigned depth);

private:
    struct Expression {
        std::string vql;
        std::string sql;
        RandomType type = RandomType::integer;
        RandomColumn::Grade grade = RandomColumn::dyadic;
        double most = 0;
    };
    using Columns = std::vector<RandomColumn>;

    unsigned Below(unsigned limit) { return static_cast<unsigned>(m_random() % limit); }
    bool Chance(unsigned percent) { return Below(100) < percent; }
    std::string NewName() { return "c" + std::to_string(m_names++); }
    RandomType AnyType();

    RandomQuery MakeTable();
    RandomQuery MakeDomain();
    RandomQuery MakeSelect(unsigned depth);
    RandomQuery MakeProject(unsigned depth);
    RandomQuery MakeRestrict(unsigned depth);
    RandomQuery MakeAggregate(unsigned depth);
    RandomQuery MakeAggregateOf(RandomQuery input, unsigned keys);
    RandomQuery MakeJoin(unsigned depth);
    RandomQuery MakeAppend(unsigned depth);
    RandomQuery MakePivot(unsigned depth);
    RandomQuery MakeOrder(unsigned depth);
    RandomQuery MakeTop(unsigned depth);
    RandomQuery Over(RandomQuery input) const;
    /// Without the columns whose values are not exact.
    RandomQuery Exact(RandomQuery input);
    std::string Sorts(const RandomQuery& query, const std::string& rank, std::string& sql);

    Expression Make(RandomType type, const Columns& columns, unsigned depth);
    /// A column, or in `literals` percent of the cases and where there is none a literal.
    Expression MakeLeaf(RandomType type, const Columns& columns, unsigned literals = 20);
    Expression MakeInteger(const Columns& columns, unsigned depth);
    Expression MakeReal(const Columns& columns, unsigned depth);
    Expression MakeText(const Columns& columns, unsigned depth);
    Expression MakeDate(const Columns& columns, unsigned depth);
    Expression MakePredicate(const Columns& columns, unsigned depth);
    Expression MakeCase(RandomType type, const Columns& columns, unsigned depth);
    Expression MakeLiteral(RandomType type);
    Expression MakeMeasure(const Columns& columns, const Columns& keys, double rows);

    const std::vector<RandomSource>& m_sources;
    std::mt19937& m_random;
    unsigned m_names = 0;
};

}  // namespace qve::test
