#include "algebra/Grouping.h"

#include <algorithm>

#include "primitives/primitive.h"
#include "storage/Column.h"
#include "storage/stream/TempFileDataStream.h"

namespace qve {

namespace {

RefCntPtr<Column> MakeTemporary(std::wstring_view type, std::wstring_view name) {
    usrprops properties = primitive::primitive_props(type);
    properties.set(usrpropkey::name, name);
    return MakeRef<Column>(std::move(properties), MakeRef<TempFileDataStream>());
}

}  // namespace

Grouping::Grouping(CompareSemantics semantics) : m_semantics(semantics) {}
Grouping::~Grouping() = default;

void Grouping::CreateInnerMatched(unsigned long long rows) {
    m_innerMatched = MakeTemporary(L"bit", L".MATCHED");
    m_innerMatched->Extend(rows);
}

RefCntPtr<Column> Grouping::GetInnerMatched() {
    return m_innerMatched;
}

void Grouping::MarkInnerMatched(unsigned long long base, unsigned limit, unsigned count, input_column rows,
                                input_column selection) {
    m_innerMatched->Seek(base, limit);
    const output_column matched = m_innerMatched->GetOutput();
    const unsigned* row = rows.values<unsigned>();
    const unsigned* sel = selection.values<unsigned>();
    for (unsigned i = 0; i < count; ++i) {
        const unsigned inner = row[sel ? sel[i] : i];
        if (inner < limit) matched.values<unsigned char>()[inner] = 1;
    }
}

bool Grouping::JoinUnmatched() {
    return true;
}
unsigned Grouping::GetSize() const {
    return m_size;
}
RefCntPtr<Column> Grouping::GetLinks() {
    return m_links;
}
bool Grouping::HasCollisions() const {
    return false;
}
bool Grouping::CanHashInnerConcurrently() const {
    return false;
}

void Grouping::Reset(unsigned) {
    m_size = 0;
    m_group = noGroup;
    m_links.reset();
    m_innerMatched.reset();
}

RefCntPtr<Column> Grouping::AllocateGroupIDs() const {
    return MakeTemporary(L"ulng", L"groupids");
}

RefCntPtr<Grouping::Context> Grouping::MakeContext(const Namespace* rows, const Namespace* groups) const {
    return MakeRef<Context>(rows, groups);
}

input_column Grouping::HashInsert(unsigned, unsigned, const unsigned*, Context*) const {
    return input_column{&m_group, nullptr, sizeof(m_group), 1, column_flags::not_null | column_flags::constant};
}

input_column Grouping::HashProbe(unsigned count, unsigned extent, const unsigned* sel, Context* context) const {
    return HashInsert(count, extent, sel, context);
}

unsigned Grouping::Probe(unsigned count, unsigned* misses, output_column groups, input_column, const unsigned* sel,
                         Context*) {
    *groups.flags |= column_flags::constant;
    if (count == 0) return 0;
    const unsigned first = sel ? sel[0] : 0;
    groups.values<unsigned>()[first] = m_group;
    if (m_group != noGroup) return 0;
    misses[0] = first;
    return 1;
}

unsigned Grouping::FindInserts(unsigned count, unsigned* inserts, unsigned* retries, input_column) {
    if (count == 0) return 0;
    inserts[0] = retries[0];
    std::copy(retries + 1, retries + count, retries);
    return 1;
}

void Grouping::InsertHash(unsigned, unsigned group) {
    m_group = group;
}

GroupingIdType Grouping::NameId() const {
    return GroupingIdType::none;
}

void Grouping::SetPoll(std::function<void()>) {}

bool Grouping::Accepts(unsigned, const unsigned*, input_column) {
    return true;
}

void Grouping::InsertHashes(unsigned count, const unsigned* rows, input_column hashes, unsigned first) {
    const bool one = hashes.count == 1;  // for all rows, wherever they stand
    for (unsigned i = 0; i < count; ++i) InsertHash(hashes.values<unsigned>()[one ? 0 : rows[i]], first + i);
}

const std::wstring& Grouping::GetName(GroupingIdType strategy) {
    static const std::wstring names[] = {
        L"Grouping",
        L"FetchGrouping",
        L"MergeGrouping",
        L"RadixGrouping",
        L"ArrayGrouping",
        L"PerfectHashGrouping",
        L"PerfectConcurrentHashGrouping",
        L"HashGrouping",
        L"ConcurrentHashGrouping",
        L"SharedJoinGrouping",
    };
    const auto id = static_cast<size_t>(strategy);
    return names[id < std::size(names) ? id : 0];
}

RefCntPtr<Grouping::Context> Grouping::MakeInnerContext(const Namespace* rows, const Namespace* groups) const {
    return MakeContext(rows, groups);
}

void Grouping::InsertInner(unsigned count, const unsigned* rows, input_column hashes, unsigned base) {
    const unsigned* hash = hashes.values<unsigned>();
    const bool single = hashes.flags & column_flags::constant;
    for (unsigned i = 0; i < count; ++i) InsertHash(hash[single ? 0 : rows[i]], base + rows[i]);
}

unsigned Grouping::ProbeHits(unsigned count, unsigned* hits, output_column groups, input_column hashes,
                             const unsigned* sel, Context* context) {
    unsigned char flags = 0;
    groups.flags = &flags;
    const unsigned misses = Probe(count, hits, groups, hashes, sel, context);
    unsigned* group = groups.values<unsigned>();
    if (flags & column_flags::constant && count > 0) {
        const unsigned only = misses > 0 ? noGroup : group[sel ? sel[0] : 0];
        for (unsigned i = 0; i < count; ++i) group[sel ? sel[i] : i] = only;
    }
    unsigned found = 0;
    for (unsigned i = 0; i < count; ++i) {
        const unsigned row = sel ? sel[i] : i;
        hits[found] = row;
        found += group[row] != noGroup;
    }
    return found;
}

void Grouping::MakeLinkColumn(unsigned long long rows) {
    m_links = MakeTemporary(L"ulng", L".LINKS");
    m_links->Append(static_cast<unsigned>(rows), true);
}

void Grouping::SetLink(unsigned long long row, unsigned next) {
    m_links->Seek(row, 1);
    *m_links->GetOutput().values<unsigned>() = next;
}

}  // namespace qve
