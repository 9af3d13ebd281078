// The expressions of random queries.

#include <fmt/format.h>

#include <algorithm>

#include "tests/e2e/RandomQuery.h"

namespace qve::test {
namespace {

using Grade = RandomColumn::Grade;

// Up to here integers, and sums of them, are exact on both sides.
constexpr double mostExact = 1e15;

Grade Worse(Grade a, Grade b) {
    return std::max(a, b);
}

}  // namespace

RandomType RandomQueryMaker::AnyType() {
    static constexpr RandomType types[] = {RandomType::integer, RandomType::integer, RandomType::integer,
                                           RandomType::real,    RandomType::text,    RandomType::text,
                                           RandomType::date,    RandomType::boolean};
    return types[Below(std::size(types))];
}

RandomQueryMaker::Expression RandomQueryMaker::MakeLiteral(RandomType type) {
    switch (type) {
        case RandomType::integer: {
            const long long value = Chance(10) ? 3'000'000'017LL * Below(20) : static_cast<int>(Below(70)) - 8;
            return {std::to_string(value), std::to_string(value), type, Grade::dyadic,
                    std::abs(static_cast<double>(value))};
        }
        case RandomType::real: {
            const std::string text = fmt::format("{:.2f}", 0.25 * (static_cast<int>(Below(60)) - 20));
            return {text, text, type, Grade::dyadic, 15};
        }
        case RandomType::text: {
            static constexpr const char* words[] = {"k1", "O", "R8", "n", "tt", "L1", "s7", "zz", "M2", "kaaaa"};
            const std::string word = words[Below(std::size(words))];
            return {"\"" + word + "\"", "'" + word + "'", type};
        }
        case RandomType::date: {
            const std::string day = fmt::format("{:04}-{:02}-{:02}", 2000 + Below(9), Below(12) + 1, Below(28) + 1);
            return {"#" + day + "#", "'" + day + "'", type};
        }
        case RandomType::boolean:
            return Chance(50) ? Expression{"true", "1", type} : Expression{"false", "0", type};
    }
    return {};
}

RandomQueryMaker::Expression RandomQueryMaker::MakeLeaf(RandomType type, const Columns& columns, unsigned literals) {
    Columns fitting;
    std::copy_if(columns.begin(), columns.end(), std::back_inserter(fitting),
                 [type](const RandomColumn& column) { return column.type == type && column.grade != Grade::inexact; });
    if (fitting.empty() || Chance(literals)) return MakeLiteral(type);
    const RandomColumn& column = fitting[Below(static_cast<unsigned>(fitting.size()))];
    return {"[" + column.name + "]", column.name, type, column.grade, column.most};
}

RandomQueryMaker::Expression RandomQueryMaker::MakeCase(RandomType type, const Columns& columns, unsigned depth) {
    Expression result{"(case", "(case", type};
    const auto branch = [&](const Expression& value) {
        result.grade = Worse(result.grade, value.grade);
        result.most = std::max(result.most, value.most);
    };
    for (unsigned i = 0, branches = 1 + Below(2); i < branches; ++i) {
        const Expression predicate = MakePredicate(columns, depth - 1);
        const Expression value = Make(type, columns, depth - 1);
        branch(value);
        result.vql += " " + predicate.vql + " " + value.vql;
        result.sql += " when " + predicate.sql + " then " + value.sql;
    }
    const bool nothing = Chance(15);
    const Expression otherwise = nothing ? Expression{"null", "null", type} : Make(type, columns, depth - 1);
    branch(otherwise);
    result.vql += " " + otherwise.vql + ")";
    result.sql += " else " + otherwise.sql + " end)";
    return result;
}

RandomQueryMaker::Expression RandomQueryMaker::Make(RandomType type, const Columns& columns, unsigned depth) {
    if (depth == 0 || Chance(25)) return MakeLeaf(type, columns);
    if (Chance(12)) return MakeCase(type, columns, depth);
    if (Chance(10)) {
        const bool greatest = Chance(50);
        const Expression a = Make(type, columns, depth - 1);
        const Expression b = Make(type, columns, depth - 1);
        return {fmt::format("({} {} {})", greatest ? "greatest" : "least", a.vql, b.vql),
                fmt::format("{}({}, {})", greatest ? "max" : "min", a.sql, b.sql), type, Worse(a.grade, b.grade),
                std::max(a.most, b.most)};
    }
    switch (type) {
        case RandomType::integer:
            return MakeInteger(columns, depth);
        case RandomType::real:
            return MakeReal(columns, depth);
        case RandomType::text:
            return MakeText(columns, depth);
        case RandomType::date:
            return MakeDate(columns, depth);
        case RandomType::boolean:
            return MakePredicate(columns, depth);
    }
    return {};
}

RandomQueryMaker::Expression RandomQueryMaker::MakeInteger(const Columns& columns, unsigned depth) {
    const unsigned kind = Below(13);
    if (kind < 7) {
        const Expression a = Make(RandomType::integer, columns, depth - 1);
        const Expression b = Make(RandomType::integer, columns, depth - 1);
        const auto call = [&](const char* vql, const char* sql, double most) {
            return Expression{fmt::format("({} {} {})", vql, a.vql, b.vql),
                              fmt::format("({} {} {})", a.sql, sql, b.sql), RandomType::integer, Grade::dyadic, most};
        };
        if (kind == 0 && a.most * b.most < mostExact) return call("*", "*", a.most * b.most);
        if (kind <= 2 && a.most + b.most < mostExact) return call("+", "+", a.most + b.most);
        if (kind <= 4 && a.most + b.most < mostExact) return call("-", "-", a.most + b.most);
        return kind == 5 ? call("div", "/", a.most) : call("%", "%", std::min(a.most, b.most));
    }
    if (kind < 9) {
        const Expression a = Make(RandomType::integer, columns, depth - 1);
        if (kind == 7) return {"(abs " + a.vql + ")", "abs(" + a.sql + ")", RandomType::integer, Grade::dyadic, a.most};
        return {"(- " + a.vql + ")", "(- " + a.sql + ")", RandomType::integer, Grade::dyadic, a.most};
    }
    if (kind == 9) {
        const Expression a = Make(RandomType::text, columns, depth - 1);
        return {"(char_length " + a.vql + ")", "length(" + a.sql + ")", RandomType::integer, Grade::dyadic, 1000};
    }
    if (kind == 10) {
        const Expression a = Make(RandomType::real, columns, depth - 1);
        return {"(to_int " + a.vql + ")", "cast(" + a.sql + " as integer)", RandomType::integer, Grade::dyadic, a.most};
    }
    const Expression a = Make(RandomType::date, columns, depth - 1);
    if (kind == 11) {
        static constexpr std::pair<const char*, const char*> parts[] = {{"year", "%Y"}, {"month", "%m"}, {"day", "%d"}};
        const auto& [vql, sql] = parts[Below(3)];
        return {fmt::format("({} {})", vql, a.vql), fmt::format("cast(strftime('{}', {}) as integer)", sql, a.sql),
                RandomType::integer, Grade::dyadic, 9999};
    }
    const Expression b = Make(RandomType::date, columns, depth - 1);
    return {fmt::format("(- {} {})", a.vql, b.vql),
            fmt::format("cast(julianday({}) - julianday({}) as integer)", a.sql, b.sql), RandomType::integer,
            Grade::dyadic, 3e6};
}

RandomQueryMaker::Expression RandomQueryMaker::MakeReal(const Columns& columns, unsigned depth) {
    const unsigned kind = Below(8);
    if (kind < 3) {
        const Expression a = Make(RandomType::real, columns, depth - 1);
        const Expression b = Make(Chance(30) ? RandomType::integer : RandomType::real, columns, depth - 1);
        if (a.most + b.most > mostExact / 8) return a;
        const char* op = Chance(50) ? "+" : "-";
        return {fmt::format("({} {} {})", op, a.vql, b.vql), fmt::format("({} {} {})", a.sql, op, b.sql),
                RandomType::real, Worse(a.grade, b.grade), a.most + b.most};
    }
    if (kind < 5) {
        const Expression a = Make(Chance(50) ? RandomType::integer : RandomType::real, columns, depth - 1);
        const Expression b = Make(RandomType::integer, columns, depth - 1);
        // Without the sum there would be zeros with a minus sign, which SQLite does not tell from others.
        return {fmt::format("(+ (/ {} {}) 0.0)", a.vql, b.vql), fmt::format("({} * 1.0 / {} + 0.0)", a.sql, b.sql),
                RandomType::real, Grade::deterministic, a.most};
    }
    const Expression a = Make(RandomType::real, columns, depth - 1);
    if (kind == 5) return {"(* " + a.vql + " 2.0)", "(" + a.sql + " * 2.0)", RandomType::real, a.grade, 2 * a.most};
    if (kind == 6)
        return {"(floor " + a.vql + ")", "(floor(" + a.sql + ") + 0.0)", RandomType::real, a.grade, a.most + 1};
    return {"(abs " + a.vql + ")", "abs(" + a.sql + ")", RandomType::real, a.grade, a.most};
}

RandomQueryMaker::Expression RandomQueryMaker::MakeText(const Columns& columns, unsigned depth) {
    const Expression a = Make(RandomType::text, columns, depth - 1);
    const unsigned count = 1 + Below(4);
    switch (Below(6)) {
        case 0:
            return {"(upper " + a.vql + ")", "upper(" + a.sql + ")", RandomType::text};
        case 1:
            return {"(lower " + a.vql + ")", "lower(" + a.sql + ")", RandomType::text};
        case 2:
            return {fmt::format("(left {} {})", a.vql, count), fmt::format("substr({}, 1, {})", a.sql, count),
                    RandomType::text};
        case 3:
            return {fmt::format("(right {} {})", a.vql, count), fmt::format("substr({}, -{})", a.sql, count),
                    RandomType::text};
        case 4: {
            const Expression b = Make(RandomType::integer, columns, depth - 1);
            return {"(to_str " + b.vql + ")", "cast(" + b.sql + " as text)", RandomType::text};
        }
        default: {
            const Expression b = Make(RandomType::text, columns, depth - 1);
            return {fmt::format("(+ {} {})", a.vql, b.vql), fmt::format("({} || {})", a.sql, b.sql), RandomType::text};
        }
    }
}

RandomQueryMaker::Expression RandomQueryMaker::MakeDate(const Columns& columns, unsigned depth) {
    const Expression a = Make(RandomType::date, columns, depth - 1);
    if (Chance(40)) return {"(truncmonth " + a.vql + ")", "date(" + a.sql + ", 'start of month')", RandomType::date};
    const Expression days = MakeLeaf(RandomType::integer, columns);
    return {fmt::format("(+ {} (% {} 400))", a.vql, days.vql),
            fmt::format("date({}, ({} % 400) || ' days')", a.sql, days.sql), RandomType::date};
}

RandomQueryMaker::Expression RandomQueryMaker::MakePredicate(const Columns& columns, unsigned depth) {
    const auto call = [](std::string vql, std::string sql) {
        return Expression{std::move(vql), std::move(sql), RandomType::boolean};
    };
    if (depth == 0) return MakeLeaf(RandomType::boolean, columns);
    const unsigned kind = Below(20);
    if (kind < 4) {
        const Expression a = MakePredicate(columns, depth - 1);
        const Expression b = MakePredicate(columns, depth - 1);
        const char* op = kind < 2 ? "and" : "or";
        return call(fmt::format("({} {} {})", op, a.vql, b.vql), fmt::format("({} {} {})", a.sql, op, b.sql));
    }
    if (kind == 4) {
        const Expression a = MakePredicate(columns, depth - 1);
        return call("(not " + a.vql + ")", "(not " + a.sql + ")");
    }
    if (kind == 5) {
        const Expression a = MakeLeaf(AnyType(), columns);
        const bool null = Chance(50);
        return call(fmt::format("({} {})", null ? "isnull" : "isnotnull", a.vql),
                    fmt::format("({} is {}null)", a.sql, null ? "" : "not "));
    }
    if (kind == 6) return MakeLeaf(RandomType::boolean, columns);
    if (kind == 7) {
        const Expression a = Make(RandomType::text, columns, depth - 1);
        const Expression b = MakeLiteral(RandomType::text);
        if (Chance(50))
            return call(fmt::format("(contains {} {})", a.vql, b.vql),
                        fmt::format("(instr({}, {}) > 0)", a.sql, b.sql));
        return call(fmt::format("(startswith {} {})", a.vql, b.vql),
                    fmt::format("(substr({}, 1, length({})) = {})", a.sql, b.sql, b.sql));
    }
    const RandomType type = AnyType();
    const Expression a = Make(type, columns, depth - 1);
    const Expression b = Chance(3)                                ? Expression{"null", "null", type}
                         : type == RandomType::real && Chance(20) ? Make(RandomType::integer, columns, depth - 1)
                                                                  : Make(type, columns, depth - 1);
    static constexpr std::pair<const char*, const char*> comparisons[] = {{"=", "="},
                                                                          {"<>", "<>"},
                                                                          {"<", "<"},
                                                                          {">", ">"},
                                                                          {"<=", "<="},
                                                                          {">=", ">="},
                                                                          {"isdistinct", "is not"},
                                                                          {"isnotdistinct", "is"}};
    const auto& [vql, sql] = comparisons[Below(std::size(comparisons))];
    return call(fmt::format("({} {} {})", vql, a.vql, b.vql), fmt::format("({} {} {})", a.sql, sql, b.sql));
}

RandomQueryMaker::Expression RandomQueryMaker::MakeMeasure(const Columns& columns, const Columns& keys, double rows) {
    const unsigned kind = Below(14);
    if (kind == 0) return {"(count)", "count(*)", RandomType::integer, Grade::dyadic, rows};
    if (kind <= 2) {
        const Expression a = Make(AnyType(), columns, 1);
        const bool distinct = kind == 2;
        return {fmt::format("({} {})", distinct ? "countd" : "count", a.vql),
                fmt::format("count({}{})", distinct ? "distinct " : "", a.sql), RandomType::integer, Grade::dyadic,
                rows};
    }
    if (kind <= 5) {
        const Expression a = Make(AnyType(), columns, 1);
        const char* op = Chance(50) ? "min" : "max";
        return {fmt::format("({} {})", op, a.vql), fmt::format("{}({})", op, a.sql), a.type, a.grade, a.most};
    }
    if (kind == 6 && !keys.empty()) {
        const RandomColumn& key = keys[Below(static_cast<unsigned>(keys.size()))];
        return {"(any [" + key.name + "])", "max(" + key.name + ")", key.type, key.grade, key.most};
    }
    const RandomType type = Chance(60) ? RandomType::integer : RandomType::real;
    const Expression a = Make(type, columns, 1);
    const double most = a.most * std::max(rows, 1.0);
    const Grade sum = a.grade == Grade::dyadic && most < mostExact ? Grade::dyadic : Grade::inexact;
    if (most >= 9e18) return {"(count)", "count(*)", RandomType::integer, Grade::dyadic, rows};
    if (kind <= 9) return {"(sum " + a.vql + ")", "sum(" + a.sql + ")", type, sum, most};
    if (kind == 10) {
        const std::string total = "total(" + a.sql + ")";
        return {"(total " + a.vql + ")", type == RandomType::integer ? "cast(" + total + " as integer)" : total, type,
                sum, most};
    }
    if (kind == 11 && sum == Grade::dyadic)
        return {"(average " + a.vql + ")", "avg(" + a.sql + ")", RandomType::real, Grade::deterministic, a.most};
    if (kind == 12 && type == RandomType::integer && most * a.most * rows < 9e18) {
        const std::string squares = fmt::format("(count({0}) * sum({0} * {0}) - sum({0}) * sum({0})) * 1.0", a.sql);
        return {"(var " + a.vql + ")", fmt::format("({} / (count({}) * (count({}) - 1)))", squares, a.sql, a.sql),
                RandomType::real, Grade::inexact, 0};
    }
    if (most + rows > mostExact) return {"(count)", "count(*)", RandomType::integer, Grade::dyadic, rows};
    return {"(+ (sum " + a.vql + ") (count))", "(sum(" + a.sql + ") + count(*))", type, sum, most + rows};
}

}  // namespace qve::test
