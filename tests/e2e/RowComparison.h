#pragma once

#include <string>
#include <vector>

#include "tests/support/EngineClient.h"

namespace qve::test {

/// Equal cells; numbers may differ in their last digits, since sums are taken in another order.
bool Same(const Cell& a, const Cell& b);
bool Same(const Row& a, const Row& b);

/// Brings rows into an order that does not depend on the order in which they came.
void Sort(std::vector<Row>& rows);

/// The cells with " | " between them.
std::string FormatRow(const Row& row);

/// What is wrong with the rows of a query, as a text of several lines; empty when nothing is. Both lists are sorted
/// first if the order does not matter.
std::string Differences(std::vector<Row> actual, std::vector<Row> expected, bool anyOrder);

}  // namespace qve::test
