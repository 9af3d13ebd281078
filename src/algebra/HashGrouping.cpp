#include "algebra/HashGrouping.h"

#include <algorithm>

#include "algebra/ColumnExp.h"
#include "algebra/HashExp.h"
#include "algebra/status.h"
#include "primitives/primitive_func.h"
#include "storage/Column.h"
#include "system/QuillonException.h"
#include "telemetry/LogEntry.h"
#include "types/cuckoo_hash.h"

namespace qve {

namespace {

// From this many groups on a table is worth a line in the log.
constexpr size_t largeTable = 0x100000;

// The type by which the cells of `column` compare with those of `other`: as numbers, where they are the values or
// unique tokens of one dictionary, else as values of their heaps.
std::wstring CheckType(const Column& column, const Column& other) {
    if (!column.IsCompressed()) return column.GetPrimitiveType(usrpropkey::compression);
    const bool byToken = column.HasProperty(usrpropkey::distinct) && column.GetDict() == other.GetDict();
    return byToken ? column.GetPrimitiveType(usrpropkey::compression) : L"usr" + std::to_wstring(column.GetTokenSize());
}

ternary_func ResolveUserCheck(const wchar_t* name, const Column& rows, const Column& groups) {
    const primitive::argument_list arguments = {{CheckType(rows, groups), primitive::storageCol},
                                                {CheckType(groups, rows), primitive::storageCol},
                                                {L"ulng", primitive::storageCol}};
    for (primitive* candidate : primitive::resolve(name, arguments)) {
        if (candidate->klass() == primitive::klassAggregate) return ResolvePrimitive<ternary_func>(candidate);
    }
    throw QVE_InvalidArgument(status::HashGrouping_ResolveUserCheck, "HashGrouping::ResolveUserCheck");
}

unary_func ResolveHashKernel(const Column& keys) {
    const primitive::argument_list arguments = {{keys.GetPrimitiveType(usrpropkey::distinct), primitive::storageCol}};
    for (primitive* candidate : primitive::resolve(L"hash", arguments)) {
        if (candidate->klass() == primitive::klassMap) return ResolvePrimitive<unary_func>(candidate);
    }
    throw QVE_InvalidArgument(status::HashGrouping_AdoptGroups, "HashGrouping::AdoptGroups");
}

constexpr unsigned adoptedRows = 1024;

}  // namespace

/// The key columns of rows and groups, and the kernels that tell where they differ.
class HashGrouping::HashContext : public ExpGrouping::ExpContext {
public:
    HashContext(const Namespace* rows, const Namespace* groups, const std::vector<std::wstring>& rowKeys,
                const std::vector<std::wstring>& groupKeys)
        : ExpContext(rows, groups) {
        for (size_t i = 0; i < rowKeys.size(); ++i) {
            m_checks.push_back({rows->GetColumn(rowKeys[i]), groups->GetColumn(groupKeys[i]), nullptr, nullptr});
        }
    }

    unsigned Probe(const cuckoo_hash<unsigned, unsigned>& table, unsigned size, unsigned count, unsigned* misses,
                   unsigned* groups, input_column hashes, const unsigned* sel) {
        if (m_missing.size() <= count) {
            m_missing.resize(count + 1);
            m_candidates.resize(count + 1);
        }
        const unsigned* hash = hashes.values<unsigned>();
        unsigned missing = table.lookup(count, m_missing.data(), groups, hash, sel);
        const unsigned extent = count == 0 ? 0 : (sel ? sel[count - 1] : count - 1) + 1;
        if (missing < count) {
            const unsigned* hits = sel;
            if (missing > 0) hits = SelectHits(count, groups, sel);
            unsigned different = Check(size, extent, count - missing, hits, groups, hashes.count);
            const unsigned first = missing;
            while (different > 0) {
                const unsigned found = table.collision_lookup(
                    different, m_candidates.data(), m_missing.data() + missing, groups, hash, m_candidates.data());
                for (unsigned i = 0; i < different - found; ++i) groups[m_missing[missing + i]] = noGroup;
                missing += different - found;
                different = found == 0 ? 0 : Check(size, extent, found, m_candidates.data(), groups, hashes.count);
            }
            if (missing > first) std::sort(m_missing.begin(), m_missing.begin() + missing);
        }
        std::copy_n(m_missing.begin(), missing, misses);
        return missing;
    }

private:
    struct KeyCheck {
        RefCntPtr<Column> rows;
        RefCntPtr<Column> groups;
        ternary_func function;
        const DataStream* dictionary;  // of the rows, when the function was chosen
    };

    const unsigned* SelectHits(unsigned count, const unsigned* groups, const unsigned* sel) {
        unsigned hits = 0;
        for (unsigned i = 0; i < count; ++i) {
            const unsigned row = sel ? sel[i] : i;
            m_candidates[hits] = row;
            hits += groups[row] != noGroup;
        }
        return m_candidates.data();
    }

    // Compares the keys of rows with those of the groups they are thought to be of, and lists the rows that differ.
    unsigned Check(unsigned size, unsigned extent, unsigned count, const unsigned* rows, unsigned* groups,
                   unsigned available) {
        if (m_differs.size() < extent) m_differs.resize(extent);
        unsigned char flags = 0;
        const output_column differs{m_differs.data(), nullptr, 1, static_cast<unsigned>(m_differs.size()), &flags};
        const input_column numbers{groups, nullptr, sizeof(unsigned), available, column_flags::not_null};
        const wchar_t* operation = L"check";
        for (KeyCheck& check : m_checks) {
            const DataStream* dictionary = check.rows->GetDict().get();
            if (!check.function || dictionary != check.dictionary) {
                check.function = ResolveUserCheck(operation, *check.rows, *check.groups);
                check.dictionary = dictionary;
            }
            operation = L"recheck";
            check.groups->Seek(0, size);
            check.function(count, differs, check.rows->GetInput(0), check.groups->GetInput(0), numbers, rows);
        }
        unsigned different = 0;
        for (unsigned i = 0; i < count; ++i) {
            const unsigned row = rows ? rows[i] : i;
            m_candidates[different] = row;
            different += m_differs[row] & 1;
        }
        return different;
    }

    std::vector<KeyCheck> m_checks;
    std::vector<unsigned> m_missing;
    std::vector<unsigned> m_candidates;
    std::vector<unsigned char> m_differs;
};

HashGrouping::HashGrouping(CompareSemantics semantics, RefCntPtr<Exp> probeExp, RefCntPtr<Exp> buildExp,
                           std::vector<std::wstring> keys, unsigned estimate)
    : HashGrouping(semantics, std::move(probeExp), std::move(buildExp), keys, keys, estimate) {}
HashGrouping::HashGrouping(CompareSemantics semantics, RefCntPtr<Exp> probeExp, RefCntPtr<Exp> buildExp,
                           std::vector<std::wstring> probeKeys, std::vector<std::wstring> buildKeys, unsigned estimate)
    : ExpGrouping(semantics, std::move(probeExp), std::move(buildExp)),
      m_probeKeys(std::move(probeKeys)),
      m_buildKeys(std::move(buildKeys)),
      m_table(std::make_unique<cuckoo_hash<unsigned, unsigned>>(estimate)) {}
HashGrouping::~HashGrouping() = default;

bool HashGrouping::HasCollisions() const {
    return m_table->HasCollisions();
}

void HashGrouping::Reset(unsigned size) {
    Grouping::Reset(size);
    m_table->clear(size);
    m_maximalCollisionRatio = 0;
}

RefCntPtr<Grouping::Context> HashGrouping::MakeContext(const Namespace* rows, const Namespace* groups) const {
    return MakeRef<HashContext>(rows, groups, m_probeKeys, m_buildKeys);
}

RefCntPtr<Grouping::Context> HashGrouping::MakeInnerContext(const Namespace* rows, const Namespace* groups) const {
    return MakeRef<HashContext>(rows, groups, m_buildKeys, m_buildKeys);
}

unsigned HashGrouping::Probe(unsigned count, unsigned* misses, output_column groups, input_column hashes,
                             const unsigned* sel, Context* context) {
    return static_cast<HashContext*>(context)->Probe(*m_table, GetSize(), count, misses, groups.values<unsigned>(),
                                                     hashes, sel);
}

void HashGrouping::InsertHash(unsigned hash, unsigned group) {
    m_table->insert(hash, group);
    if (m_table->size() >= largeTable) {
        const double ratio = static_cast<double>(m_table->collisions()) / static_cast<double>(m_table->size());
        m_maximalCollisionRatio = std::max(m_maximalCollisionRatio, ratio);
    }
}

void HashGrouping::AdoptGroups(Column& keys, unsigned count) {
    const unary_func hash = ResolveHashKernel(keys);
    std::vector<unsigned> hashes(adoptedRows);
    unsigned char flags = 0;
    const output_column out{hashes.data(), nullptr, sizeof(unsigned), adoptedRows, &flags};
    for (unsigned first = 0; first < count; first += adoptedRows) {
        const unsigned rows = std::min(adoptedRows, count - first);
        keys.Seek(first, rows);
        hash(rows, out, keys.GetInput(), nullptr);
        for (unsigned i = 0; i < rows; ++i) InsertHash(hashes[i], first + i);
    }
    SetSize(count);
}

GroupingIdType HashGrouping::NameId() const {
    return GroupingIdType::hash;
}

void HashGrouping::LogHashtableStatistics(std::string_view text) const {
    if (m_table->size() < largeTable) return;
    LogEntry() << text << ": size=" << m_table->size() << " capacity=" << m_table->capacity()
               << " stashes=" << m_table->stashed() << " collisions=" << m_table->collisions()
               << " maximal collision ratio=" << m_maximalCollisionRatio;
}

RefCntPtr<Exp> HashGrouping::ResolveHash(const Namespace& input, const std::vector<std::wstring>& keys, bool tokens) {
    RefCntPtr<HashExp> hash;
    for (const std::wstring& key : keys) {
        const RefCntPtr<Column> column = input.DescribeColumn(key);
        hash = MakeRef<HashExp>(L".HashGrouping", hash ? L"rehash" : L"hash", MakeRef<ColumnExp>(column), tokens, hash);
    }
    if (!hash) return nullptr;
    try {
        hash->AllocateColumn(&input);
    } catch (const QVE_InvalidArgument&) {
        return nullptr;  // no kernel for one of the types
    }
    return hash;
}

}  // namespace qve
