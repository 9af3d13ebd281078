#include "algebra/Compact.h"

#include <algorithm>
#include <cstring>

#include "algebra/OperatorVisitor.h"
#include "algebra/reserve_page.h"
#include "algebra/status.h"
#include "primitives/column_kernels.h"
#include "storage/Column.h"
#include "system/QuillonException.h"
#include "system/unicode.h"

namespace qve {

namespace {

// What is said of the storage of a column or of all its rows, and does not hold of pages of some of them.
constexpr usrpropkey invalidated[] = {usrpropkey::encoding,     usrpropkey::dense,       usrpropkey::sum_value,
                                      usrpropkey::sum2_value,   usrpropkey::count_value, usrpropkey::median_value,
                                      usrpropkey::generated_by, usrpropkey::storagetype};

usrprops PageProperties(const Column& source) {
    usrprops properties = source.GetProperties();
    for (const usrpropkey key : invalidated) properties.erase(key);
    return properties;
}

}  // namespace

class Compact::Compactor : public RefCntObject {
public:
    Compactor(RefCntPtr<Column> source, RefCntPtr<Column> output)
        : m_source(std::move(source)), m_output(std::move(output)) {}

    /// Whether cells of the source's page may stand beside those that are in the output.
    bool Fits() const {
        return m_source->GetDict() == m_output->GetDict() && m_source->GetTokenSize() == m_output->GetTokenSize();
    }

    /// Makes an empty output ready for the cells of the source's page.
    void Adopt() {
        if (m_output->GetTokenSize() != m_source->GetTokenSize()) {
            m_output->SetProperty(usrpropkey::storagewidth, std::to_wstring(m_source->GetTokenSize()));
            m_output->SetData(nullptr);
        }
        if (m_source->GetDict() != m_output->GetDict()) m_output->SetDict(m_source->GetDict());
        m_fetch = map_fetch_ulng_col_type_col(m_output->GetTokenSize());
    }

    /// Puts `count` rows of the source's page at `at`: those that `selection` lists from `first` on, or without one
    /// those from row `first` on.
    void Overlay(unsigned at, unsigned first, unsigned count, const unsigned* selection) {
        reserve_page(*m_output, at + count);
        // What the page says about nulls is not true of the rows before.
        unsigned char flags = 0;
        output_column out = m_output->GetOutput(at);
        out.flags = &flags;
        const input_column in = m_source->GetInput(0);
        if (m_source->GetStorageName() == Column::storageVal) {
            if (m_zeros.size() < count) m_zeros.resize(count, 0);
            Fetch(count, out, m_zeros.data(), in);
        } else if (selection) {
            Fetch(count, out, selection + first, in);
        } else {
            const size_t width = m_output->GetTokenSize();
            std::memcpy(out.data, static_cast<const char*>(in.data) + first * width, count * width);
        }
        m_output->SetFlags(0);
    }

private:
    void Fetch(unsigned count, output_column out, const unsigned* rows, input_column in) const {
        m_fetch(count, out, input_column{rows, nullptr, sizeof(unsigned), count, column_flags::not_null}, in, nullptr);
    }

    const RefCntPtr<Column> m_source;
    const RefCntPtr<Column> m_output;
    binary_func m_fetch = nullptr;
    std::vector<unsigned> m_zeros;
};

Compact::Compact(RefCntPtr<DataFlow> source) : DataFlow(source, source ? source->GetColumnNames() : ColumnNames()) {
    if (!m_source) throw QVE_InvalidArgument(status::Compact_source, "Compact::m_source");
}

Compact::~Compact() = default;

void Compact::Accept(OperatorVisitor& visitor) {
    visitor.VisitCompact(*this);
}

uint64_t Compact::GetCursor() const {
    return m_outCursor.load(std::memory_order_relaxed);
}

uint64_t Compact::GetPreviousCursor() const {
    return m_previousCursor.load(std::memory_order_relaxed);
}

void Compact::ResetCursor() {
    DataFlow::ResetCursor();
    m_outCursor.store(0, std::memory_order_relaxed);
    m_previousCursor.store(0, std::memory_order_relaxed);
    m_sourcePos = m_sourceExtent = 0;
    m_sourceExhausted = false;
    SetPage(0);
}

RefCntPtr<Column> Compact::LoadColumn(const std::wstring& name) const {
    if (!m_source->HasColumn(name)) {
        throw QVE_OutOfRange(status::Compact_LoadColumn, "Compact::LoadColumn: " + narrow(name));
    }
    const RefCntPtr<Column> source = m_source->GetColumn(name);
    return MakeRef<Column>(PageProperties(*source), nullptr, source->GetDict());
}

RefCntPtr<Column> Compact::LookupColumn(const std::wstring& name) const {
    return MakeRef<Column>(PageProperties(*m_source->DescribeColumn(name)));
}

// The next page of the source that has selected rows.
bool Compact::NextSource(unsigned pageSize) {
    m_sourcePos = 0;
    do {
        if (m_source->Next(pageSize) == 0) {
            m_sourceExtent = 0;
            m_sourceExhausted = true;
            return false;
        }
        m_sourceExtent = m_source->GetSelectionCount();
    } while (m_sourceExtent == 0);
    return true;
}

unsigned Compact::Next(unsigned pageSize) {
    m_previousCursor.store(GetCursor(), std::memory_order_relaxed);
    m_filled = 0;
    while (m_filled < pageSize) {
        if (m_sourcePos == m_sourceExtent && (m_sourceExhausted || !NextSource(pageSize))) break;
        if (m_compactors.empty()) {
            for (const auto& entry : m_columns) {
                m_compactors.push_back(MakeRef<Compactor>(m_source->GetColumn(entry.first), GetColumn(entry.first)));
            }
        }
        if (m_filled == 0) {
            m_outCursor.store(m_source->GetPreviousCursor() + m_sourcePos, std::memory_order_relaxed);
            for (const auto& compactor : m_compactors) compactor->Adopt();
        } else if (!std::all_of(m_compactors.begin(), m_compactors.end(), [](const auto& c) { return c->Fits(); })) {
            break;
        }
        const unsigned take = std::min(pageSize - m_filled, m_sourceExtent - m_sourcePos);
        for (const auto& compactor : m_compactors) {
            compactor->Overlay(m_filled, m_sourcePos, take, m_source->GetSelection());
        }
        m_filled += take;
        m_sourcePos += take;
    }
    if (m_filled == 0) m_outCursor.store(m_source->GetCursor(), std::memory_order_relaxed);
    return SetPage(m_filled);
}

}  // namespace qve
