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
    /// rows, of the pages that a consumer asks for; sources are pulled by pages of at least that. Never runs
    /// concurrently with itself.
    virtual uint64_t Build(unsigned pageSize) = 0;

protected:
    /// The size of the pages by which a table that reads its source to the end pulls it. What each page costs counts
    /// for less in larger ones, and nobody waits for the first; they still lie in the cache.
    static unsigned SourcePageSize(unsigned pageSize) {
        constexpr unsigned factor = 4;
        constexpr unsigned most = 8192;
        return pageSize > most / factor ? pageSize : pageSize * factor;
    }
};

}  // namespace qve
