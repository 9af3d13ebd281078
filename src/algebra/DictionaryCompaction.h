#pragma once

#include <cstdint>

#include "os/BudgetedMemory.h"
#include "storage/stream/DataStream.h"
#include "system/ProgressCallback.h"
#include "system/RefCntPtr.h"

namespace qve {

class Column;

/// Leaves out of a dictionary what the rows of a column do not use, as those of a few rows of a large table do not use
/// most of its dictionary. The entries keep their order, so that tokens compare as they did.
class DictionaryCompaction {
public:
    /// A dictionary below this size, in bytes, is left as it is.
    static constexpr uint64_t least = 4096;

    /// Reads all rows of a column with a heap of texts. `progress` may be null; once it says cancelled,
    /// CancelledException ends this and what follows.
    DictionaryCompaction(Column& column, RefCntPtr<ProgressCallback> progress);

    /// Whether at least a quarter of the dictionary goes.
    bool Pays() const;
    /// Entries that are used.
    uint64_t GetCardinality() const { return m_cardinality; }
    /// The dictionary without the others. Throws what a temporary stream throws.
    RefCntPtr<DataStream> MakeDictionary();
    /// Replaces tokens of `width` bytes by those of the new dictionary.
    void Translate(unsigned count, unsigned width, void* tokens) const;

private:
    template <class Token>
    void Mark(unsigned count, const Token* tokens);
    template <class Token>
    void Replace(unsigned count, Token* tokens) const;
    template <class Visit>
    void VisitUsed(Visit visit) const;
    bool IsUsed(uint64_t token) const { return token < m_size && m_used[token / 64] >> token % 64 & 1; }

    Column& m_column;
    const RefCntPtr<ProgressCallback> m_progress;
    const uint64_t m_size;               // of the dictionary in bytes, which are what tokens count
    budgeted_vector<uint64_t> m_used;    // a bit for each token
    budgeted_vector<uint64_t> m_before;  // used tokens before those of a word of m_used
    budgeted_vector<uint64_t> m_tokens;  // the new ones of the used
    uint64_t m_cardinality = 0;
    uint64_t m_bytes = 0;  // that the used entries take
};

}  // namespace qve
