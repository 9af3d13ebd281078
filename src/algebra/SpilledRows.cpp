#include "algebra/SpilledRows.h"

#include <algorithm>
#include <cstring>

#include "algebra/reserve_page.h"
#include "storage/Column.h"

namespace qve {

namespace {

constexpr uint64_t chunkBytes = uint64_t{1} << 16;
constexpr uint64_t slabBytes = uint64_t{1} << 22;
constexpr unsigned sequenceBytes = sizeof(uint64_t);

// Calls f(T()) for the unsigned type that is as wide as a cell.
template <class F>
bool WithWidth(unsigned width, F f) {
    switch (width) {
        case 1:
            f(uint8_t{});
            return true;
        case 2:
            f(uint16_t{});
            return true;
        case 4:
            f(uint32_t{});
            return true;
        case 8:
            f(uint64_t{});
            return true;
        default:
            return false;
    }
}

void Pack(unsigned count, const unsigned* rows, const char* cells, unsigned width, char* const* places,
          unsigned offset) {
    const bool known = WithWidth(width, [&](auto tag) {
        using T = decltype(tag);
        const T* values = reinterpret_cast<const T*>(cells);
        for (unsigned i = 0; i < count; ++i) std::memcpy(places[i] + offset, &values[rows[i]], sizeof(T));
    });
    if (known) return;
    for (unsigned i = 0; i < count; ++i) std::memcpy(places[i] + offset, cells + uint64_t{rows[i]} * width, width);
}

void Unpack(unsigned count, const char* from, unsigned stride, unsigned width, char* cells) {
    const bool known = WithWidth(width, [&](auto tag) {
        using T = decltype(tag);
        T* values = reinterpret_cast<T*>(cells);
        for (unsigned i = 0; i < count; ++i) std::memcpy(&values[i], from + uint64_t{i} * stride, sizeof(T));
    });
    if (known) return;
    for (unsigned i = 0; i < count; ++i) std::memcpy(cells + uint64_t{i} * width, from + uint64_t{i} * stride, width);
}

// The tables that the rows of a partition go to use the lower bits of the same hash: what makes the partition is mixed
// of all.
unsigned PartitionOf(unsigned hash, unsigned shift) {
    return (hash * 0x9E3779B1u) >> shift & (SpilledRows::partitions - 1);
}

}  // namespace

SpilledRows::SpilledRows(std::vector<RefCntPtr<Column>> columns, unsigned level)
    : m_columns(std::move(columns)), m_shift(32 - partitionBits * (level + 1)), m_partitions(partitions) {}

SpilledRows::~SpilledRows() {
    Finish();
}

// A flow may take wider tokens, or another dictionary, on its way.
void SpilledRows::UseLayout() {
    const auto same = [this](const Layout& layout) {
        for (size_t c = 0; c < m_columns.size(); ++c) {
            if (layout.widths[c] != m_columns[c]->GetTokenSize()) return false;
            if (layout.dictionaries[c] != m_columns[c]->GetDict()) return false;
        }
        return true;
    };
    if (!m_layouts.empty() && same(m_layouts.back())) return;
    for (Partition& partition : m_partitions) CloseChunk(partition);
    Layout layout{{}, {}, {}, sequenceBytes, 0};
    for (const RefCntPtr<Column>& column : m_columns) {
        layout.widths.push_back(column->GetTokenSize());
        layout.dictionaries.push_back(column->GetDict());
        layout.offsets.push_back(layout.rowBytes);
        layout.rowBytes += column->GetTokenSize();
    }
    layout.chunkRows = static_cast<unsigned>(chunkBytes / layout.rowBytes);
    m_layouts.push_back(std::move(layout));
}

char* SpilledRows::TakeChunkMemory() {
    if (!m_free.empty()) {
        char* const chunk = m_free.back();
        m_free.pop_back();
        return chunk;
    }
    if (m_slabs.empty() || m_slabUsed == slabBytes) {
        // Each partition has a chunk that is being filled, come what may.
        const bool afford = BudgetedMemory::GetInMemory() + slabBytes <= BudgetedMemory::GetBudget() / 2;
        if (!afford && m_slabs.size() * slabBytes >= partitions * chunkBytes) return nullptr;
        m_slabs.emplace_back(slabBytes);
        m_slabUsed = 0;
    }
    char* const chunk = m_slabs.back().data() + m_slabUsed;
    m_slabUsed += chunkBytes;
    return chunk;
}

void SpilledRows::OpenChunk(Partition& partition) {
    if (partition.open && partition.chunks.back().rows > 0) {
        if (char* const memory = TakeChunkMemory()) {
            partition.open = memory;
        } else {
            CloseChunk(partition);
        }
    }
    if (!partition.open) {
        partition.open = TakeChunkMemory();
        while (!partition.open) {
            // The first chunk of a partition comes late: it takes that of another.
            const auto full =
                std::max_element(m_partitions.begin(), m_partitions.end(), [](const Partition& a, const Partition& b) {
                    const auto rows = [](const Partition& p) { return p.open ? p.chunks.back().rows + 1 : 0; };
                    return rows(a) < rows(b);
                });
            CloseChunk(*full);
            partition.open = TakeChunkMemory();
        }
    }
    partition.chunks.push_back({partition.open, 0, 0, static_cast<unsigned>(m_layouts.size() - 1)});
}

// Writes the open chunk to the file, and frees its memory.
void SpilledRows::CloseChunk(Partition& partition) {
    if (!partition.open) return;
    Chunk& chunk = partition.chunks.back();
    chunk.position = m_file.Append(chunk.memory, uint64_t{chunk.rows} * m_layouts[chunk.layout].rowBytes);
    chunk.memory = nullptr;
    m_free.push_back(partition.open);
    partition.open = nullptr;
}

void SpilledRows::Add(unsigned count, const unsigned* rows, input_column hashes, const uint64_t* sequence,
                      uint64_t nextSequence) {
    UseLayout();
    const auto* const hash = hashes.values<unsigned>();
    const bool one = hashes.count == 1;
    const Layout& layout = m_layouts.back();
    if (m_places.size() < count) m_places.resize(count);
    for (unsigned done = 0; done < count;) {
        // A chunk that is closed for want of memory must have been written to before.
        unsigned placed = 0;
        for (; done + placed < count; ++placed) {
            const unsigned row = rows[done + placed];
            Partition& partition = m_partitions[PartitionOf(hash[one ? 0 : row], m_shift)];
            if (!partition.open || partition.chunks.back().rows == layout.chunkRows) {
                if (placed > 0) break;
                OpenChunk(partition);
            }
            Chunk& chunk = partition.chunks.back();
            char* const place = partition.open + uint64_t{chunk.rows++} * layout.rowBytes;
            const uint64_t number = sequence ? sequence[row] : nextSequence + done + placed;
            std::memcpy(place, &number, sizeof number);
            m_places[placed] = place;
        }
        for (size_t c = 0; c < m_columns.size(); ++c) {
            Pack(placed, rows + done, static_cast<const char*>(m_columns[c]->GetInput(0).data), layout.widths[c],
                 m_places.data(), layout.offsets[c]);
        }
        done += placed;
    }
    m_count += count;
}

void SpilledRows::StartPartition(unsigned partition) {
    if (m_streams.empty()) {
        for (const RefCntPtr<Column>& column : m_columns) {
            const auto original = MakeRef<Column>(column->GetProperties());
            original->ShareStreams(*column);
            usrprops properties = column->GetProperties();
            properties.erase(usrpropkey::encoding);
            m_streams.push_back({column, original, MakeRef<Column>(std::move(properties)), column->GetFlags()});
        }
    }
    m_partition = partition;
    m_chunk = 0;
    m_row = 0;
    m_rows = nullptr;
}

void SpilledRows::ShowLayout(const Layout& layout) {
    for (size_t c = 0; c < m_columns.size(); ++c) {
        Column& page = *m_streams[c].page;
        if (page.GetTokenSize() != layout.widths[c]) {
            page.SetData(nullptr);
            page.SetProperty(usrpropkey::storagewidth, std::to_wstring(layout.widths[c]));
            m_columns[c]->SetProperty(usrpropkey::storagewidth, std::to_wstring(layout.widths[c]));
        }
        if (page.GetDict() != layout.dictionaries[c]) page.SetDict(layout.dictionaries[c]);
    }
}

unsigned SpilledRows::Next(unsigned pageSize) {
    Partition& partition = m_partitions[m_partition];
    while (m_chunk < partition.chunks.size() && m_row == partition.chunks[m_chunk].rows) {
        Chunk& chunk = partition.chunks[m_chunk];
        if (chunk.memory) {
            if (chunk.memory == partition.open) partition.open = nullptr;
            m_free.push_back(chunk.memory);
            chunk.memory = nullptr;
        }
        ++m_chunk;
        m_row = 0;
        m_rows = nullptr;
    }
    if (m_chunk == partition.chunks.size()) return 0;
    const Chunk& chunk = partition.chunks[m_chunk];
    const Layout& layout = m_layouts[chunk.layout];
    if (!m_rows) {
        if (!chunk.memory) {
            m_read.resize(chunkBytes);
            m_file.Read(chunk.position, m_read.data(), uint64_t{chunk.rows} * layout.rowBytes);
        }
        m_rows = chunk.memory ? chunk.memory : m_read.data();
        ShowLayout(layout);
    }
    const unsigned count = std::min(pageSize, chunk.rows - m_row);
    const char* const from = m_rows + uint64_t{m_row} * layout.rowBytes;
    m_sequence.resize(std::max<size_t>(m_sequence.size(), count));
    Unpack(count, from, layout.rowBytes, sequenceBytes, reinterpret_cast<char*>(m_sequence.data()));
    for (size_t c = 0; c < m_columns.size(); ++c) {
        Column& page = *m_streams[c].page;
        const output_column out = reserve_page(page, count);
        Unpack(count, from + layout.offsets[c], layout.rowBytes, layout.widths[c], static_cast<char*>(out.data));
        m_columns[c]->ShareStreams(page);
        m_columns[c]->SetFlags(0);
    }
    m_row += count;
    return count;
}

void SpilledRows::Finish() {
    for (const Streams& streams : m_streams) {
        if (streams.column->GetTokenSize() != streams.original->GetTokenSize()) {
            streams.column->SetProperty(usrpropkey::storagewidth, std::to_wstring(streams.original->GetTokenSize()));
        }
        streams.column->ShareStreams(*streams.original);
        streams.column->SetFlags(streams.flags);
    }
    m_streams.clear();
}

}  // namespace qve
