#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "algebra/Namespace.h"
#include "os/BudgetedMemory.h"

namespace qve {

class ProgressCallback;
class Table;
struct wide_item;

/// The sort keys of the rows of a table as one string of bits each, whose order is that of the rows: the keys one
/// behind the other, each as wide as the difference of its largest and smallest value. A key column is read when the
/// first bit of it is needed.
class SortKeys {
public:
    /// The bits of a key string are handled in pieces of so many.
    static constexpr unsigned chunkBits = 32;
    /// What the items of FillWide hold, in chunks.
    static constexpr unsigned wideChunks = 3;

    /// Rows are counted from the start of `table`, which is built and outlives this. `progress` may be null.
    SortKeys(const Table& table, const std::vector<Namespace::SortSpec>& specs, const ProgressCallback* progress);
    ~SortKeys();

    /// Whether the key strings reach into the chunk.
    bool HasChunk(unsigned chunk);
    /// For each of `count` rows: items[i] = the chunk of its key << 32 | its number. `rows` null means rows 0 to count.
    void FillChunk(unsigned chunk, const unsigned* rows, uint64_t count, uint64_t* items);
    /// The rows in their order, each with the first 96 bits of its key.
    void FillWide(uint64_t count, wide_item* items);
    /// Gives the memory of the keys back; nothing but the destructor may follow.
    void Release();
    /// Whether row `a` comes before row `b`.
    bool Less(unsigned a, unsigned b);

private:
    // The words of a key less the lowest of them, in as many bytes as they need.
    struct Key {
        dense_vector<uint64_t> wide;
        dense_vector<uint32_t> narrow;
        unsigned bits;
        uint64_t first;  // bit of the string

        uint64_t At(unsigned row) const { return wide.empty() ? narrow[row] : wide[row]; }
        /// Calls use(words) with those that there are.
        template <class Use>
        void Visit(Use use) const {
            wide.empty() ? use(narrow.data()) : use(wide.data());
        }
    };

    bool Load(uint64_t bits);
    Key LoadKey(const Namespace::SortSpec& spec) const;
    std::pair<uint64_t, uint64_t> Extremes(const dense_vector<uint64_t>& words) const;
    dense_vector<uint64_t> LoadWords(const Namespace::SortSpec& spec) const;

    const Table& m_table;
    const std::vector<Namespace::SortSpec> m_specs;
    const ProgressCallback* const m_progress;
    std::vector<Key> m_keys;
    size_t m_loaded = 0;
    uint64_t m_bits = 0;
};

}  // namespace qve
