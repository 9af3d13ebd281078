#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "os/ZeroedMemory.h"

namespace qve {

/// Values, each with the number of a group, in the order in which they came. Held in memory in pieces, so that growing
/// moves nothing. While all values are of group 0, numbers are not kept.
template <class T>
class GroupedValues {
public:
    uint64_t GetCount() const { return m_count; }

    /// Room for values at the end, and with `grouped` for their numbers too, where it is null otherwise. They count
    /// once `Commit` says how many were written.
    struct Room {
        std::span<T> values;
        unsigned* groups;
    };
    Room Reserve(bool grouped) {
        if (grouped && !m_grouped) KeepGroups();
        if (m_pieces.empty() || m_pieces.back().count == m_pieces.back().capacity) AddPiece();
        Piece& piece = m_pieces.back();
        return {std::span(piece.Values() + piece.count, piece.capacity - piece.count),
                m_grouped ? piece.Groups() + piece.count : nullptr};
    }
    void Commit(uint64_t count) {
        m_pieces.back().count += count;
        m_count += count;
    }

    /// All values, whatever their groups.
    std::vector<std::span<const T>> GetPieces() const {
        std::vector<std::span<const T>> pieces;
        for (const Piece& piece : m_pieces) pieces.emplace_back(piece.Values(), piece.count);
        return pieces;
    }

    /// Calls `visit(group, values)` for each group below `groups` that has values, and `poll()`, which may throw, now
    /// and then. Empties this.
    template <class Visit, class Poll>
    void VisitGroups(uint64_t groups, Visit visit, Poll poll) {
        if (!m_grouped) KeepGroups();
        std::vector<uint64_t> ends(groups + 1);
        for (const Piece& piece : m_pieces) {
            poll();
            for (uint64_t k = 0; k < piece.count; ++k) ++ends[piece.Groups()[k] + uint64_t{1}];
        }
        for (uint64_t group = 0; group < groups; ++group) {
            if (group % polledValues == 0) poll();
            ends[group + 1] += ends[group];
        }
        ZeroedMemory memory(m_count * sizeof(T), true);
        T* sorted = static_cast<T*>(memory.data());
        for (Piece& piece : m_pieces) {
            poll();
            for (uint64_t k = 0; k < piece.count; ++k) sorted[ends[piece.Groups()[k]]++] = piece.Values()[k];
            piece = {};
        }
        m_pieces.clear();
        m_count = 0;
        // Filling has moved the start of each group to its end, which is the start of the next.
        for (uint64_t group = 0, begin = 0, polled = 0; group < groups; begin = ends[group++]) {
            if (begin - polled >= polledValues) {
                poll();
                polled = begin;
            }
            if (ends[group] > begin) visit(group, std::span<T>(sorted + begin, ends[group] - begin));
        }
    }

private:
    static constexpr uint64_t firstPiece = 1u << 13;
    static constexpr uint64_t furtherPiece = 1u << 20;
    static constexpr uint64_t polledValues = 1u << 16;

    struct Piece {
        uint64_t capacity = 0;
        uint64_t count = 0;
        ZeroedMemory values;
        ZeroedMemory groups;  // empty while all are 0

        const T* Values() const { return static_cast<const T*>(values.data()); }
        T* Values() { return static_cast<T*>(values.data()); }
        const unsigned* Groups() const { return static_cast<const unsigned*>(groups.data()); }
        unsigned* Groups() { return static_cast<unsigned*>(groups.data()); }
    };
    void AddPiece() {
        Piece& piece = m_pieces.emplace_back();
        piece.capacity = m_pieces.size() == 1 ? firstPiece : furtherPiece;
        piece.values = ZeroedMemory(piece.capacity * sizeof(T), true);
        if (m_grouped) piece.groups = ZeroedMemory(piece.capacity * sizeof(unsigned), true);
    }
    void KeepGroups() {
        for (Piece& piece : m_pieces) piece.groups = ZeroedMemory(piece.capacity * sizeof(unsigned), true);
        m_grouped = true;
    }

    std::vector<Piece> m_pieces;
    uint64_t m_count = 0;
    bool m_grouped = false;
};

}  // namespace qve
