#pragma once

#include <cstdint>

#include "algebra/Namespace.h"

namespace qve {

/// A materialised operator: built once, then immutable, holding all its rows in columns.
class Table : public Namespace {
public:
    /// The first row of the table within its columns.
    virtual uint64_t GetStart() const = 0;
    /// The number of rows; valid once the table is built.
    virtual uint64_t GetCount() const = 0;
    /// Does the work on the first call and returns GetCount(); later calls only return it. `pageSize` is the size, in
    /// rows, of the pages that are pulled from sources. Never runs concurrently with itself.
    virtual uint64_t Build(unsigned pageSize) = 0;
};

}  // namespace qve
