#include "algebra/KeyChanges.h"

#include <cstring>

#include "primitives/primitive.h"
#include "storage/Column.h"

namespace qve {

bool KeyChanges::AddKey(const Column& column) {
    const std::wstring type = column.GetPrimitiveType(usrpropkey::distinct);
    for (primitive* kernel : primitive::resolve(L"run", {{type, primitive::storageCol}})) {
        if (kernel->klass() != primitive::klassMap) continue;
        m_keys.push_back({ResolvePrimitive<unary_func>(kernel), {}});
        return true;
    }
    return false;
}

// The kernels compare neighbours, so each writes its own marks, and the marks are gathered.
const unsigned char* KeyChanges::Mark(unsigned count, unsigned extent, const unsigned* sel,
                                      std::span<const input_column> keys) {
    const unsigned first = sel ? sel[0] : 0;
    m_heads.assign(extent, 0);
    const bool starts = Differs(first, sel ? sel[count - 1] : count - 1, keys) || !m_carriesOver;
    for (size_t i = 0; i < m_keys.size(); ++i) {
        m_marks.assign(extent, 0);
        m_keys[i].run(count, output_column{m_marks.data(), nullptr, 1, extent, nullptr}, keys[i], sel);
        for (unsigned row = 0; row < extent; ++row) m_heads[row] |= m_marks[row];
    }
    m_heads[first] = starts;
    m_carriesOver = true;
    return m_heads.data();
}

// Compares the first keys of the page with the last of the page before, and keeps the last of this one.
bool KeyChanges::Differs(unsigned firstRow, unsigned lastRow, std::span<const input_column> keys) {
    bool differs = false;
    for (size_t i = 0; i < m_keys.size(); ++i) {
        Key& key = m_keys[i];
        const input_column& cells = keys[i];
        const auto* bytes = cells.values<unsigned char>();
        std::memcpy(key.edge.data() + cells.width, bytes + cells.width * firstRow, cells.width);
        unsigned char marks[2] = {0, 0};
        input_column edge = cells;
        edge.data = key.edge.data();
        edge.count = 2;
        key.run(2, output_column{marks, nullptr, 1, 2, nullptr}, edge, nullptr);
        differs = differs || marks[1];
        std::memcpy(key.edge.data(), bytes + cells.width * lastRow, cells.width);
    }
    return differs;
}

}  // namespace qve
