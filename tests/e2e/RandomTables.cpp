#include "tests/e2e/RandomTables.h"

#include <fmt/format.h>

#include <algorithm>

namespace qve::test {
namespace {

using Values = std::vector<std::string>;

struct Shape {
    unsigned distinct;
    double nulls;
    bool sorted;
};

// The value number `n` of a type. Sums of the reals have no rounding errors.
std::string ValueOf(RandomType type, bool wide, unsigned n) {
    switch (type) {
        case RandomType::integer:
            return wide ? std::to_string(n * 3'000'000'017LL - 900'000'000'000LL)
                        : std::to_string(static_cast<int>(n) - 5);
        case RandomType::real:
            return fmt::format("{:.2f}", 0.25 * (static_cast<int>(n) - 11));
        case RandomType::text:
            return fmt::format("{}{}", "kLmnOpqRst"[n % 10],
                               n % 3 ? std::to_string(n) : std::string(n % 7 + 1, 'a' + n % 26));
        case RandomType::date:
            return fmt::format("{:04}-{:02}-{:02}", 2000 + n / 336 % 40, n / 28 % 12 + 1, n % 28 + 1);
        case RandomType::boolean:
            return n % 2 ? "true" : "false";
    }
    return {};
}

std::string SchemaType(RandomType type) {
    switch (type) {
        case RandomType::integer:
            return "bigint";
        case RandomType::real:
            return "double";
        case RandomType::text:
            return "varchar";
        case RandomType::date:
            return "date";
        case RandomType::boolean:
            return "bit";
    }
    return {};
}

std::string SqlType(RandomType type) {
    return type == RandomType::real                               ? "real"
           : type == RandomType::text || type == RandomType::date ? "text"
                                                                  : "integer";
}

Values MakeValues(RandomType type, bool wide, unsigned rows, const Shape& shape, std::mt19937& random) {
    std::vector<unsigned> numbers(rows);
    for (unsigned i = 0; i < rows; ++i) numbers[i] = shape.distinct >= rows ? i : random() % shape.distinct;
    if (shape.sorted) {
        std::sort(numbers.begin(), numbers.end());
    } else {
        std::shuffle(numbers.begin(), numbers.end(), random);
    }
    Values values;
    std::uniform_real_distribution<double> share;
    for (const unsigned number : numbers) {
        values.push_back(share(random) < shape.nulls ? "" : ValueOf(type, wide, number));
    }
    return values;
}

}  // namespace

std::vector<RandomTable> MakeRandomTables(const std::string& prefix, std::mt19937& random) {
    static const unsigned sizes[] = {0, 1, 2, 9, 40, 250, 1100, 2600};
    static const unsigned distincts[] = {1, 2, 7, 60, 100000};
    static const double shares[] = {0, 0, 0.1, 0.5, 1};
    const auto pick = [&random](const auto& from) { return from[random() % std::size(from)]; };

    std::vector<RandomTable> tables;
    for (unsigned t = 0; t < 5; ++t) {
        const unsigned rows = pick(sizes);
        RandomTable table;
        table.source.name = prefix + std::to_string(t);
        table.source.rows = rows;
        std::vector<Values> columns;
        std::string definitions;
        const auto add = [&](const std::string& name, RandomType type, Values values, double most) {
            table.source.columns.push_back({name, type, RandomColumn::dyadic, most});
            table.schema += fmt::format("((name \"{}\") (type \"{}\")) ", name, SchemaType(type));
            table.definitions += fmt::format("([{}] ((type \"{}\"){}))", name, SchemaType(type),
                                             type == RandomType::text ? " (collation \"binary\")" : "");
            definitions += fmt::format("{}{} {}", definitions.empty() ? "" : ", ", name, SqlType(type));
            table.csv += (columns.empty() ? "" : ",") + name;
            columns.push_back(std::move(values));
        };
        add("id", RandomType::integer,
            MakeValues(RandomType::integer, false, rows, {100000, 0, random() % 4 > 0}, random), 3000);
        const std::pair<const char*, RandomType> kinds[] = {{"i", RandomType::integer}, {"j", RandomType::integer},
                                                            {"w", RandomType::integer}, {"x", RandomType::real},
                                                            {"s", RandomType::text},    {"t", RandomType::text},
                                                            {"d", RandomType::date},    {"b", RandomType::boolean}};
        for (const auto& [name, type] : kinds) {
            const bool wide = *name == 'w';
            const Shape shape{pick(distincts), pick(shares), random() % 4 == 0};
            add(name, type, MakeValues(type, wide, rows, shape, random), wide ? 1e13 : 3000);
        }
        table.sql = fmt::format("create table {} ({});", table.source.name, definitions);
        for (unsigned row = 0; row < rows; ++row) {
            for (size_t i = 0; i < columns.size(); ++i) table.csv += (i ? "," : "\n") + columns[i][row];
        }
        table.csv += '\n';
        tables.push_back(std::move(table));
    }
    return tables;
}

}  // namespace qve::test
