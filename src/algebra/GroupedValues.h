#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace qve {

/// Values of 8 bytes, each with the number of a group, in the order in which they came. Held in memory in pieces, so
/// that growing moves nothing.
template <class T>
class GroupedValues {
public:
    static constexpr unsigned pieceSize = 1u << 16;

    uint64_t GetCount() const { return m_count; }

    /// Room for values at the end, as many as the span has; they count once `Commit` says how many were written.
    struct Room {
        std::span<T> values;
        std::span<unsigned> groups;
    };
    Room Reserve() {
        if (m_count == uint64_t{pieceSize} * m_pieces.size()) m_pieces.push_back(std::make_unique<Piece>());
        Piece& piece = *m_pieces.back();
        const auto used = static_cast<unsigned>(m_count - uint64_t{pieceSize} * (m_pieces.size() - 1));
        return {std::span(piece.values).subspan(used), std::span(piece.groups).subspan(used)};
    }
    void Commit(size_t count) { m_count += count; }

    /// All values, whatever their groups.
    std::vector<std::span<const T>> GetPieces() const {
        std::vector<std::span<const T>> pieces;
        for (size_t i = 0; i < m_pieces.size(); ++i) pieces.push_back(std::span(m_pieces[i]->values).first(SizeOf(i)));
        return pieces;
    }

    /// Calls `visit(group, values)` for each group below `groups` that has values. Empties this.
    template <class Visit>
    void VisitGroups(uint64_t groups, Visit visit) {
        std::vector<uint64_t> ends(groups + 1);
        for (size_t i = 0; i < m_pieces.size(); ++i)
            for (size_t k = 0; k < SizeOf(i); ++k) ++ends[m_pieces[i]->groups[k] + uint64_t{1}];
        for (uint64_t group = 0; group < groups; ++group) ends[group + 1] += ends[group];
        const auto sorted = std::make_unique_for_overwrite<T[]>(m_count);
        for (size_t i = 0; i < m_pieces.size(); ++i) {
            for (size_t k = 0; k < SizeOf(i); ++k) sorted[ends[m_pieces[i]->groups[k]]++] = m_pieces[i]->values[k];
            m_pieces[i].reset();
        }
        m_pieces.clear();
        m_count = 0;
        // Filling has moved the start of each group to its end, which is the start of the next.
        for (uint64_t group = 0, begin = 0; group < groups; begin = ends[group++]) {
            if (ends[group] > begin) visit(group, std::span<T>(sorted.get() + begin, ends[group] - begin));
        }
    }

private:
    struct Piece {
        T values[pieceSize];
        unsigned groups[pieceSize];
    };
    size_t SizeOf(size_t piece) const {
        const uint64_t before = uint64_t{pieceSize} * piece;
        return m_count - before < pieceSize ? m_count - before : pieceSize;
    }

    std::vector<std::unique_ptr<Piece>> m_pieces;
    uint64_t m_count = 0;
};

}  // namespace qve
