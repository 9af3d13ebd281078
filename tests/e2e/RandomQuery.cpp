#include "tests/e2e/RandomQuery.h"

#include <fmt/format.h>

#include <algorithm>

namespace qve::test {
namespace {

using Grade = RandomColumn::Grade;

// Pairs of rows that a join may look at.
constexpr double mostPairs = 60'000;

std::string Names(const std::vector<RandomColumn>& columns) {
    std::string text;
    for (const RandomColumn& column : columns) text += (text.empty() ? "[" : " [") + column.name + "]";
    return text;
}

std::string SqlNames(const std::vector<RandomColumn>& columns, const std::string& prefix = "") {
    std::string text;
    for (const RandomColumn& column : columns) text += (text.empty() ? "" : ", ") + prefix + column.name;
    return text;
}

bool IsExact(const RandomColumn& column) {
    return column.grade != Grade::inexact;
}

}  // namespace

std::string RandomQuery::RestrictedVql() const {
    return fmt::format("(restrict {} ({}))", vql, Names(columns));
}

RandomQuery RandomQueryMaker::Make(unsigned depth) {
    if (depth == 0) return MakeTable();
    switch (Below(16)) {
        case 0:
            return MakeTable();
        case 1:
        case 2:
            return MakeSelect(depth);
        case 3:
        case 4:
            return MakeProject(depth);
        case 5:
            return MakeRestrict(depth);
        case 6:
        case 7:
            return MakeAggregate(depth);
        case 8:
        case 9:
        case 10:
            return MakeJoin(depth);
        case 11:
            return MakeOrder(depth);
        case 12:
            return MakeAppend(depth);
        case 13:
            return MakePivot(depth);
        case 14:
            return MakeDomain();
        default:
            return MakeTop(depth);
    }
}

// A query over one other, without its text.
RandomQuery RandomQueryMaker::Over(RandomQuery input) const {
    RandomQuery query;
    query.columns = input.columns;
    query.most = input.most;
    query.inputs.push_back(std::make_shared<const RandomQuery>(std::move(input)));
    return query;
}

RandomQuery RandomQueryMaker::MakeTable() {
    const RandomSource& source = m_sources[Below(static_cast<unsigned>(m_sources.size()))];
    RandomQuery query;
    query.vql = "(table [r].[" + source.name + "])";
    query.sql = "select * from " + source.name;
    query.columns = source.columns;
    query.most = static_cast<double>(source.rows);
    return query;
}

// The dictionary of a text column.
RandomQuery RandomQueryMaker::MakeDomain() {
    const RandomSource& source = m_sources[Below(static_cast<unsigned>(m_sources.size()))];
    const auto text = std::find_if(source.columns.begin(), source.columns.end(),
                                   [](const RandomColumn& column) { return column.type == RandomType::text; });
    if (text == source.columns.end() || !source.loaded) return MakeTable();
    RandomColumn value = *text;
    value.name = NewName();
    RandomQuery query;
    query.vql = fmt::format("(domain [r].[{}].[{}] (([{}] [{}])))", source.name, text->name, text->name, value.name);
    query.sql = fmt::format("select distinct {} as {} from {} where {} is not null", text->name, value.name,
                            source.name, text->name);
    query.columns = {value};
    query.most = static_cast<double>(source.rows);
    return query;
}

RandomQuery RandomQueryMaker::MakeSelect(unsigned depth) {
    const RandomQuery input = Make(depth - 1);
    const Expression predicate = MakePredicate(input.columns, 3);
    RandomQuery query = Over(input);
    query.vql = fmt::format("(select {} {})", input.vql, predicate.vql);
    query.sql = fmt::format("select * from ({}) where {}", input.sql, predicate.sql);
    return query;
}

RandomQuery RandomQueryMaker::MakeProject(unsigned depth) {
    const RandomQuery input = Make(depth - 1);
    RandomQuery query = Over(input);
    std::string vql;
    std::string sql;
    Columns computed;
    for (unsigned i = 0, count = 1 + Below(3); i < count; ++i) {
        const Expression value = Make(AnyType(), input.columns, 1 + Below(3));
        std::string name = NewName();
        if (Chance(15)) {
            const std::string& old = input.columns[Below(static_cast<unsigned>(input.columns.size()))].name;
            const bool taken = std::any_of(computed.begin(), computed.end(),
                                           [&old](const RandomColumn& column) { return column.name == old; });
            if (!taken) name = old;
        }
        vql += fmt::format("{}([{}] {})", vql.empty() ? "" : " ", name, value.vql);
        sql += fmt::format(", {} as {}", value.sql, name);
        computed.push_back({name, value.type, value.grade, value.most});
        std::erase_if(query.columns, [&name](const RandomColumn& column) { return column.name == name; });
    }
    query.vql = fmt::format("(project {} ({}))", input.vql, vql);
    const std::string kept = SqlNames(query.columns);
    query.sql = fmt::format("select {} from ({})", kept.empty() ? sql.substr(2) : kept + sql, input.sql);
    query.columns.insert(query.columns.end(), computed.begin(), computed.end());
    return query;
}

RandomQuery RandomQueryMaker::MakeRestrict(unsigned depth) {
    const RandomQuery input = Make(depth - 1);
    RandomQuery query = Over(input);
    while (query.columns.size() > 1 && Chance(70)) {
        query.columns.erase(query.columns.begin() + Below(static_cast<unsigned>(query.columns.size())));
    }
    query.vql = fmt::format("(restrict {} ({}))", input.vql, Names(query.columns));
    query.sql = fmt::format("select {} from ({})", SqlNames(query.columns), input.sql);
    return query;
}

RandomQuery RandomQueryMaker::Exact(RandomQuery input) {
    if (std::all_of(input.columns.begin(), input.columns.end(), IsExact)) return input;
    RandomQuery query = Over(input);
    std::erase_if(query.columns, [](const RandomColumn& column) { return !IsExact(column); });
    if (query.columns.empty()) return MakeTable();
    query.vql = fmt::format("(restrict {} ({}))", input.vql, Names(query.columns));
    query.sql = fmt::format("select {} from ({})", SqlNames(query.columns), input.sql);
    return query;
}

RandomQuery RandomQueryMaker::MakeAggregate(unsigned depth) {
    return MakeAggregateOf(Make(depth - 1), Chance(12) ? 0 : 1 + Below(3));
}

// The keys are the first columns.
RandomQuery RandomQueryMaker::MakeAggregateOf(RandomQuery input, unsigned keys) {
    RandomQuery query = Over(input);
    query.columns.clear();
    std::string vqlKeys;
    std::string vqlMeasures;
    std::string sql;
    std::string sqlKeys;
    const auto add = [&](const std::string& name, const Expression& value) {
        query.columns.push_back({name, value.type, value.grade, value.most});
        sql += fmt::format("{}{} as {}", sql.empty() ? "" : ", ", value.sql, name);
    };
    Columns plain;
    for (unsigned i = 0; i < keys; ++i) {
        const bool isPlain = Chance(70);
        const Expression key = isPlain ? MakeLeaf(AnyType(), input.columns) : Make(AnyType(), input.columns, 2);
        const auto column = std::find_if(input.columns.begin(), input.columns.end(),
                                         [&key](const RandomColumn& one) { return one.name == key.sql; });
        std::string name = NewName();
        const bool taken = std::any_of(query.columns.begin(), query.columns.end(),
                                       [&key](const RandomColumn& one) { return one.name == key.sql; });
        if (column != input.columns.end()) {
            plain.push_back(*column);
            if (Chance(50) && !taken) name = column->name;
        }
        vqlKeys += fmt::format("{}([{}] {})", vqlKeys.empty() ? "" : " ", name, key.vql);
        sqlKeys += (sqlKeys.empty() ? "" : ", ") + name;  // not the expression: a number would mean a column
        add(name, key);
    }
    for (unsigned i = 0, measures = (keys == 0 ? 1 : 0) + Below(4); i < measures; ++i) {
        const Expression measure = MakeMeasure(input.columns, plain, input.most);
        const std::string name = NewName();
        vqlMeasures += fmt::format("{}([{}] {})", vqlMeasures.empty() ? "" : " ", name, measure.vql);
        add(name, measure);
    }
    query.vql = fmt::format("(aggregate {} ({}) ({}))", input.vql, vqlKeys, vqlMeasures);
    // Without keys there is no row of nothing.
    query.sql = fmt::format("select {} from ({}) {}", sql, input.sql,
                            keys == 0 ? "having count(*) > 0" : "group by " + sqlKeys);
    if (keys == 0) query.most = 1;
    return query;
}

RandomQuery RandomQueryMaker::MakeJoin(unsigned depth) {
    const RandomQuery left = Make(depth - 1);
    const bool lookup = Chance(12);
    RandomQuery right;
    for (unsigned tries = 0; tries < 6; ++tries) {
        right = Make(depth - 1);
        if (left.most * right.most <= mostPairs) break;
    }
    if (left.most * right.most > mostPairs) return left;

    // The partner of a lookup is certain where each key has one row.
    const unsigned lookupKeys = lookup ? 1 + Below(2) : 0;
    if (lookup) right = MakeAggregateOf(right, lookupKeys);

    const bool nullsMatch = lookup || Chance(20);
    std::string vqlKeys;
    std::string condition;
    std::string inner;
    std::vector<std::string> used;
    for (unsigned i = 0, keys = lookup ? lookupKeys : Chance(8) ? 0 : 1 + Below(2); i < keys; ++i) {
        const RandomType type = lookup ? right.columns[i].type : AnyType();
        const bool plain = Chance(70);
        const Expression a = plain ? MakeLeaf(type, left.columns) : Make(type, left.columns, 2);
        const Expression b = lookup  ? MakeLeaf(type, {right.columns[i]}, 0)
                             : plain ? MakeLeaf(type, right.columns)
                                     : Make(type, right.columns, 2);
        // No column may stand in two conditions.
        if (std::any_of(used.begin(), used.end(),
                        [&](const std::string& one) { return one == "l." + a.sql || one == "r." + b.sql; })) {
            if (lookup) return left;
            continue;
        }
        used.push_back("l." + a.sql);
        used.push_back("r." + b.sql);
        vqlKeys += fmt::format("{}({} {})", vqlKeys.empty() ? "" : " ", a.vql, b.vql);
        const std::string key = NewName();
        inner += fmt::format("{}{} as {}", inner.empty() ? "" : ", ", b.sql, key);
        condition += fmt::format("{}{} {} {}", condition.empty() ? "" : " and ", a.sql, nullsMatch ? "is" : "=", key);
    }

    RandomQuery query;
    query.inputs = {std::make_shared<const RandomQuery>(left), std::make_shared<const RandomQuery>(right)};
    query.columns = left.columns;
    std::string vqlImports;
    std::string sqlImports;
    Columns imports;
    for (unsigned i = 0, count = Below(4); i < count; ++i) {
        const Expression value = Chance(70) ? MakeLeaf(AnyType(), right.columns) : Make(AnyType(), right.columns, 2);
        const std::string imported = NewName();
        std::string name = imported;
        if (Chance(8)) {
            const std::string& old = left.columns[Below(static_cast<unsigned>(left.columns.size()))].name;
            const bool taken = std::any_of(imports.begin(), imports.end(),
                                           [&old](const RandomColumn& column) { return column.name == old; });
            if (!taken) name = old;
        }
        vqlImports += fmt::format("{}([{}] {})", vqlImports.empty() ? "" : " ", name, value.vql);
        inner += fmt::format("{}{} as {}", inner.empty() ? "" : ", ", value.sql, imported);
        sqlImports += fmt::format(", {} as {}", imported, name);
        imports.push_back({name, value.type, value.grade, value.most});
        std::erase_if(query.columns, [&name](const RandomColumn& column) { return column.name == name; });
    }
    const std::string kept = SqlNames(query.columns, "l.");
    query.columns.insert(query.columns.end(), imports.begin(), imports.end());

    static constexpr std::pair<const char*, const char*> kinds[] = {
        {"join", "join"}, {"leftjoin", "left join"}, {"rightjoin", "right join"}, {"fulljoin", "full join"}};
    const auto& [vql, sql] = kinds[Below(lookup ? 2 : std::size(kinds))];
    query.vql = fmt::format("({} {} {} ({}) ({}){})", vql, left.vql, right.vql, vqlKeys, vqlImports,
                            lookup       ? " islookup"
                            : nullsMatch ? " isnotdistinct"
                                         : "");
    query.sql = fmt::format("select {} from ({}) l {} (select {} from ({})) r on {}",
                            kept.empty() ? sqlImports.substr(2) : kept + sqlImports, left.sql, sql,
                            inner.empty() ? "1" : inner, right.sql, condition.empty() ? "1" : condition);
    query.most = left.most * right.most + left.most + right.most;
    return query;
}

// Each column of the left query that is shown is continued by one of its type of the right.
RandomQuery RandomQueryMaker::MakeAppend(unsigned depth) {
    const RandomQuery left = Make(depth - 1);
    const RandomQuery right = Make(depth - 1);
    RandomQuery query;
    query.inputs = {std::make_shared<const RandomQuery>(left), std::make_shared<const RandomQuery>(right)};
    Columns others = right.columns;
    std::shuffle(others.begin(), others.end(), m_random);
    std::string renames;
    Columns sources;
    for (const RandomColumn& column : left.columns) {
        const auto found = std::find_if(others.begin(), others.end(),
                                        [&column](const RandomColumn& other) { return other.type == column.type; });
        if (found == others.end()) continue;
        renames += fmt::format("{}([{}] [{}])", renames.empty() ? "" : " ", found->name, column.name);
        query.columns.push_back(
            {column.name, column.type, std::max(column.grade, found->grade), std::max(column.most, found->most)});
        sources.push_back(*found);
        others.erase(found);
    }
    if (query.columns.empty()) return left;
    query.vql = fmt::format("(append (restrict {} ({})) (restrict {} ({})) ({}))", left.vql, Names(query.columns),
                            right.vql, Names(sources), renames);
    query.sql = fmt::format("select {} from ({}) union all select {} from ({})", SqlNames(query.columns), left.sql,
                            SqlNames(sources), right.sql);
    query.most = left.most + right.most;
    return query;
}

RandomQuery RandomQueryMaker::MakePivot(unsigned depth) {
    const RandomQuery input = Make(depth - 1);
    RandomQuery query = Over(input);
    const RandomType type = AnyType();
    Columns members;
    for (const RandomColumn& column : input.columns) {
        if (column.type == type && members.size() < 3) members.push_back(column);
    }
    if (members.empty()) return input;
    std::erase_if(query.columns, [&members](const RandomColumn& column) {
        return std::any_of(members.begin(), members.end(),
                           [&column](const RandomColumn& member) { return member.name == column.name; });
    });
    const std::string tag = NewName();
    const std::string value = NewName();
    const std::string kept = query.columns.empty() ? "" : SqlNames(query.columns) + ", ";
    RandomColumn group{value, type, Grade::dyadic, 0};
    std::string tags;
    for (size_t i = 0; i < members.size(); ++i) {
        tags += fmt::format("{}[tag{}]", i ? " " : "", i);
        query.sql += fmt::format("{}select {}'tag{}' as {}, {} as {} from ({})", i ? " union all " : "", kept, i, tag,
                                 members[i].name, value, input.sql);
        group.grade = std::max(group.grade, members[i].grade);
        group.most = std::max(group.most, members[i].most);
    }
    query.vql = fmt::format("(pivot {} ([{}] ({})) (([{}] ({}))))", input.vql, tag, tags, value, Names(members));
    query.columns.push_back({tag, RandomType::text, Grade::dyadic, 0});
    query.columns.push_back(group);
    query.most *= static_cast<double>(members.size());
    return query;
}

std::string RandomQueryMaker::Sorts(const RandomQuery& query, const std::string& rank, std::string& sql) {
    Columns keys = query.columns;
    std::shuffle(keys.begin(), keys.end(), m_random);
    std::string vql;
    const auto add = [&](const std::string& vqlKey, const std::string& sqlKey) {
        const char* sense = Chance(50) ? "asc" : "desc";
        const std::string name = vql.empty() && !rank.empty() ? " [" + rank + "]" : "";
        vql += fmt::format("{}({} {}{})", vql.empty() ? "" : " ", vqlKey, sense, name);
        sql += fmt::format("{}{} {}", sql.empty() ? "" : ", ", sqlKey, sense);
    };
    if (Chance(20)) {
        const Expression key = Make(AnyType(), query.columns, 1);
        // To SQLite a number would be a column.
        if (key.vql.front() == '(') add(key.vql, "ifnull(" + key.sql + ", null)");
    }
    for (const RandomColumn& key : keys) add("[" + key.name + "]", key.name);
    return vql;
}

RandomQuery RandomQueryMaker::MakeOrder(unsigned depth) {
    const RandomQuery input = Exact(Make(depth - 1));
    RandomQuery query = Over(input);
    const std::string rank = Chance(20) ? NewName() : "";
    std::string sorts;
    const std::string vql = Sorts(input, rank, sorts);
    query.vql = fmt::format("(order {} ({}))", input.vql, vql);
    query.sql = fmt::format("select *{} from ({}) order by {}",
                            rank.empty() ? "" : fmt::format(", row_number() over (order by {}) - 1 as {}", sorts, rank),
                            input.sql, sorts);
    if (!rank.empty()) query.columns.push_back({rank, RandomType::integer, Grade::dyadic, input.most});
    query.ordered = true;
    return query;
}

RandomQuery RandomQueryMaker::MakeTop(unsigned depth) {
    const RandomQuery input = Exact(Make(depth - 1));
    RandomQuery query = Over(input);
    static constexpr unsigned counts[] = {0, 1, 3, 20, 500, 100000};
    const unsigned count = counts[Below(std::size(counts))];
    std::string sorts;
    const std::string vql = Sorts(input, "", sorts);
    query.vql = fmt::format("(top {} ({}) {})", input.vql, vql, count);
    query.sql = fmt::format("select * from ({}) order by {} limit {}", input.sql, sorts, count);
    query.most = std::min<double>(query.most, count);
    query.ordered = true;
    return query;
}

}  // namespace qve::test
