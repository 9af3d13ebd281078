// What a column does with its tokens and its dictionary.

#include <algorithm>
#include <cstring>
#include <vector>

#include "primitives/column_kernels.h"
#include "storage/Column.h"
#include "storage/ToProperty.h"
#include "storage/status.h"
#include "storage/stream/TempFileDataStream.h"
#include "system/QuillonException.h"
#include "types/builtin.h"
#include "types/compaccel.h"

namespace qve {

namespace {

/// Adds up how often each entry occurs; `tokens` are the tokens of the entries, ascending.
template <class T>
void CountTokens(const void* cells, uint64_t count, const std::vector<uint64_t>& tokens, bool ordinals,
                 std::vector<uint64_t>& frequencies) {
    const T* const values = static_cast<const T*>(cells);
    for (uint64_t i = 0; i < count; ++i) {
        if (values[i] == static_cast<T>(~T{0})) continue;
        uint64_t entry = values[i];
        if (!ordinals) {
            const auto found = std::lower_bound(tokens.begin(), tokens.end(), entry);
            if (found == tokens.end() || *found != entry) continue;
            entry = static_cast<uint64_t>(found - tokens.begin());
        }
        if (entry < frequencies.size()) ++frequencies[entry];
    }
}

}  // namespace

unsigned Column::GetMinimalTokenSize() const {
    if (!m_heap) return m_tokenSize;
    const uint64_t next = m_heap->next();
    unsigned size = 1;
    while (size < m_tokenSize && next >> (8 * size) != 0) size *= 2;
    return size;
}

bool Column::SetTokenSize(RefCntPtr<DataStream> target, unsigned size) {
    const bool known = size == 1 || size == 2 || size == 4 || size == 8;
    if (!m_compressed || !m_heap || !known || size == m_tokenSize) return false;
    if (size < 8 && m_heap->next() > (uint64_t{1} << (8 * size)) - 1) return false;
    const auto convert = map_idx_col_idx_col(m_tokenSize, size);
    constexpr uint64_t window = 65535;
    const uint64_t rows = GetCount();
    for (uint64_t row = 0; row < rows;) {
        const uint64_t count = std::min({Seek(row, 1), window, rows - row});
        target->Extend(count * size);
        output_column cells;
        cells.data = target->GetOutput(0);
        cells.width = size;
        cells.limit = static_cast<unsigned>(count);
        unsigned char reported = 0;
        cells.flags = &reported;
        input_column tokens = GetInput();
        tokens.heap = nullptr;
        convert(static_cast<unsigned>(count), cells, tokens, nullptr);
        row += count;
    }
    target->Seek(0, 0);
    m_properties.set(usrpropkey::storagewidth, size);
    UpdateHints();
    SetData(std::move(target));
    return true;
}

bool Column::MinimiseTokens(RefCntPtr<DataStream> target) {
    const unsigned minimal = GetMinimalTokenSize();
    return minimal != m_tokenSize && SetTokenSize(std::move(target), minimal);
}

uint64_t Column::GetDictionaryToken(const usratom& atom) const {
    if (!m_heap) return usrheap::null_token;
    const bool searched = m_dictionary->CanExtend() || m_dictionary->GetAccelerator() ||
                          (m_dictionary->IsResident() && m_heap->next() <= s_usrAcceleratorThreshold) ||
                          !HasProperty(usrpropkey::comparable);
    if (!searched) {
        auto accelerator = MakeRef<compaccel>(GetType(), HasProperty(usrpropkey::distinct));
        accelerator->build(*m_heap);
        m_dictionary->SetAccelerator(std::move(accelerator));
    }
    return m_heap->find(atom);
}

bool Column::IsAcceleratorComplete() const {
    if (!m_dictionary) return true;
    const auto* accelerator = dynamic_cast<const usraccel*>(m_dictionary->GetAccelerator());
    return accelerator && accelerator->complete();
}

void Column::UpdateAcceleratorProperties() {
    if (!m_dictionary) return;
    const auto* accelerator = dynamic_cast<const usraccel*>(m_dictionary->GetAccelerator());
    if (!accelerator) return;
    for (const usrpropkey key : {usrpropkey::distinct, usrpropkey::cardinality, usrpropkey::comparable,
                                 usrpropkey::min_value, usrpropkey::max_value}) {
        m_properties.erase(key);
    }
    if (accelerator->complete()) {
        if (accelerator->distinct()) m_properties.set(usrpropkey::distinct, true);
        m_properties.set(usrpropkey::cardinality, accelerator->cardinality());
        if (accelerator->comparable()) {
            m_properties.set(usrpropkey::comparable, true);
            if (accelerator->cardinality() > 0) {
                m_properties.set(usrpropkey::min_value, ToProperty(m_heap->get(m_heap->first())));
                m_properties.set(usrpropkey::max_value, ToProperty(accelerator->last_atom(*m_heap)));
            }
        }
    }
    UpdateHints();
}

RefCntPtr<Column> Column::GetFrequencyColumn() const {
    if (!m_compressed) {
        throw QVE_LogicError(status::Column_GetFrequencyColumn, "Column::GetFrequencyColumn: Not compressed.");
    }
    std::vector<uint64_t> tokens;
    if (m_heap) {
        for (uint64_t token = m_heap->first(); token < m_heap->next(); token = m_heap->after(token)) {
            tokens.push_back(token);
        }
    }
    const bool ordinals = tokens.empty() || (tokens.front() == 0 && tokens.back() + 1 == tokens.size());
    std::vector<uint64_t> frequencies(tokens.size());
    if (m_data) {
        // The window of the column is its reader's: it is put back where it was.
        const uint64_t cursor = m_data->GetCursor(), limit = m_data->GetLimit();
        const uint64_t rows = GetCount();
        for (uint64_t row = 0; row < rows;) {
            const uint64_t count = std::min(Rows(m_data->Seek(Bytes(row), m_tokenSize)), rows - row);
            const char* const cells = m_data->GetInput(0);
            switch (m_tokenSize) {
                case 1:
                    CountTokens<uint8_t>(cells, count, tokens, ordinals, frequencies);
                    break;
                case 2:
                    CountTokens<uint16_t>(cells, count, tokens, ordinals, frequencies);
                    break;
                case 4:
                    CountTokens<uint32_t>(cells, count, tokens, ordinals, frequencies);
                    break;
                default:
                    CountTokens<uint64_t>(cells, count, tokens, ordinals, frequencies);
                    break;
            }
            row += count;
        }
        m_data->Seek(cursor, limit);
    }
    usrprops properties = builtin::primitive_props(L"oid");
    properties.set(usrpropkey::name, nameFreq);
    properties.set(usrpropkey::not_null, true);
    auto data = MakeRef<TempFileDataStream>();
    data->Append(frequencies.data(), frequencies.size() * sizeof(uint64_t));
    data->Seek(0, 0);
    return MakeRef<Column>(std::move(properties), std::move(data));
}

}  // namespace qve
