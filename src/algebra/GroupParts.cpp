#include "algebra/GroupParts.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <numeric>

#include "algebra/OperatorProgressCallback.h"
#include "os/BudgetedMemory.h"
#include "storage/Column.h"
#include "storage/stream/TempFileDataStream.h"

namespace qve {

namespace {

constexpr uint64_t blockGroups = uint64_t{1} << 16;

/// Tells how many of a set of numbers are below one of them.
class NumberRanks {
public:
    explicit NumberRanks(uint64_t end) : m_present(end / 64 + 1), m_before(end / 64 + 1) {}

    void Insert(uint64_t number) { m_present[number >> 6] |= uint64_t{1} << (number & 63); }
    void Finish() {
        uint64_t before = 0;
        for (size_t word = 0; word < m_present.size(); ++word) {
            m_before[word] = before;
            before += static_cast<unsigned>(std::popcount(m_present[word]));
        }
    }
    uint64_t GetRank(uint64_t number) const {
        const uint64_t below = m_present[number >> 6] & ((uint64_t{1} << (number & 63)) - 1);
        return m_before[number >> 6] + static_cast<unsigned>(std::popcount(below));
    }

private:
    budgeted_vector<uint64_t> m_present;
    budgeted_vector<uint64_t> m_before;
};

template <class T>
void Scatter(uint64_t count, const char* from, const unsigned* places, void* to) {
    const T* values = reinterpret_cast<const T*>(from);
    for (uint64_t i = 0; i < count; ++i) static_cast<T*>(to)[places[i]] = values[i];
}

void Scatter(unsigned width, uint64_t count, const char* from, const unsigned* places, void* to) {
    switch (width) {
        case 1:
            return Scatter<uint8_t>(count, from, places, to);
        case 2:
            return Scatter<uint16_t>(count, from, places, to);
        case 4:
            return Scatter<uint32_t>(count, from, places, to);
        case 8:
            return Scatter<uint64_t>(count, from, places, to);
        default:
            for (uint64_t i = 0; i < count; ++i) {
                std::memcpy(static_cast<char*>(to) + uint64_t{places[i]} * width, from + i * width, width);
            }
    }
}

}  // namespace

GroupParts::GroupParts(std::vector<RefCntPtr<Column>> columns)
    : m_columns(std::move(columns)), m_sequence(MakeRef<TempFileDataStream>()) {
    for (size_t c = 0; c < m_columns.size(); ++c) m_cells.push_back(MakeRef<TempFileDataStream>());
}
GroupParts::~GroupParts() = default;

void GroupParts::Add(uint64_t groups, const uint64_t* sequence, const ProgressCallback* progress) {
    // Keys that only share their hash with others of a page are inserted behind them.
    const bool ordered = !sequence || std::is_sorted(sequence, sequence + groups);
    budgeted_vector<unsigned> places;
    budgeted_vector<uint64_t> numbers;
    if (!ordered) {
        budgeted_vector<unsigned> order(groups);
        std::iota(order.begin(), order.end(), 0u);
        std::sort(order.begin(), order.end(), [&](unsigned a, unsigned b) { return sequence[a] < sequence[b]; });
        places.resize(groups);
        for (unsigned place = 0; place < groups; ++place) {
            places[order[place]] = place;
            numbers.push_back(sequence[order[place]]);
        }
        sequence = numbers.data();
    }
    budgeted_vector<char> cells;
    for (size_t c = 0; c < m_columns.size(); ++c) {
        Column& column = *m_columns[c];
        const unsigned width = column.GetTokenSize();
        if (!ordered) cells.resize(groups * width);
        for (uint64_t done = 0; done < groups;) {
            OperatorProgressCallback::Check(progress);
            const uint64_t rows = std::min(column.Seek(done, 1), groups - done);
            const char* const window = static_cast<const char*>(column.GetInput().data);
            if (ordered) {
                m_cells[c]->Append(window, rows * width);
            } else {
                Scatter(width, rows, window, places.data() + done, cells.data());
            }
            done += rows;
        }
        if (!ordered) m_cells[c]->Append(cells.data(), cells.size());
        column.SetData(MakeRef<TempFileDataStream>());
    }
    if (sequence) {
        m_sequence->Append(sequence, groups * sizeof(uint64_t));
    } else {
        std::vector<uint64_t> first(std::min(groups, blockGroups));
        for (uint64_t done = 0; done < groups; done += first.size()) {
            std::iota(first.begin(), first.end(), done);
            m_sequence->Append(first.data(), std::min<uint64_t>(first.size(), groups - done) * sizeof(uint64_t));
        }
    }
    m_parts.push_back({m_count, m_count + groups});
    m_count += groups;
}

void GroupParts::Merge(uint64_t end, const ProgressCallback* progress) {
    const auto numbers = [this](uint64_t from, uint64_t count) {
        m_sequence->Seek(from * sizeof(uint64_t), count * sizeof(uint64_t));
        return reinterpret_cast<const uint64_t*>(m_sequence->GetInput(0));
    };
    NumberRanks ranks(end);
    for (uint64_t done = 0; done < m_count; done += blockGroups) {
        OperatorProgressCallback::Check(progress);
        const uint64_t count = std::min(blockGroups, m_count - done);
        const uint64_t* const block = numbers(done, count);
        for (uint64_t i = 0; i < count; ++i) ranks.Insert(block[i]);
    }
    ranks.Finish();

    struct Piece {
        uint64_t first;
        uint64_t count;
    };
    std::vector<Piece> pieces(m_parts.size());
    std::vector<unsigned> places;
    for (uint64_t begin = 0; begin < m_count; begin += blockGroups) {
        OperatorProgressCallback::Check(progress);
        const uint64_t count = std::min(blockGroups, m_count - begin);
        places.clear();
        for (size_t p = 0; p < m_parts.size(); ++p) {
            Part& part = m_parts[p];
            const uint64_t most = std::min(count, part.end - part.next);
            const uint64_t* const block = most ? numbers(part.next, most) : nullptr;
            uint64_t taken = 0;
            for (; taken < most; ++taken) {
                const uint64_t place = ranks.GetRank(block[taken]) - begin;
                if (place >= count) break;
                places.push_back(static_cast<unsigned>(place));
            }
            pieces[p] = {part.next, taken};
            part.next += taken;
        }
        for (size_t c = 0; c < m_columns.size(); ++c) {
            Column& column = *m_columns[c];
            const unsigned width = column.GetTokenSize();
            column.Extend(count);
            void* const out = column.GetOutput().data;
            const unsigned* next = places.data();
            for (const Piece& piece : pieces) {
                if (piece.count == 0) continue;
                m_cells[c]->Seek(piece.first * width, piece.count * width);
                Scatter(width, piece.count, m_cells[c]->GetInput(0), next, out);
                next += piece.count;
            }
        }
    }
}

}  // namespace qve
