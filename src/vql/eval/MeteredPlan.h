#pragma once

#include <memory>
#include <string>
#include <vector>

#include "algebra/Namespace.h"
#include "system/RefCntPtr.h"

namespace qve {

class Database;

/// A copy of a plan that counts, when it runs, what each operator gives and how long that takes.
class MeteredPlan {
public:
    struct Meter {
        uint64_t rows = 0;
        double seconds = 0;  // its sources' time included
    };

    /// The copy is made by way of the plan's text. Throws what writing and reading it throws.
    MeteredPlan(Namespace& plan, const RefCntPtr<Database>& database);

    const RefCntPtr<Namespace>& GetRoot() const { return m_root; }
    /// In the order in which FormatNamespace writes the operators.
    const std::vector<std::unique_ptr<Meter>>& GetMeters() const { return m_meters; }

private:
    std::vector<std::unique_ptr<Meter>> m_meters;
    RefCntPtr<Namespace> m_root;
};

}  // namespace qve
