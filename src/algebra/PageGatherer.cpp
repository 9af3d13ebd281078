#include "algebra/PageGatherer.h"

#include <cstring>

#include "algebra/reserve_page.h"
#include "primitives/column_kernels.h"
#include "storage/Column.h"

namespace qve {

namespace {

constexpr usrpropkey invalidated[] = {usrpropkey::encoding,     usrpropkey::dense,       usrpropkey::sum_value,
                                      usrpropkey::sum2_value,   usrpropkey::count_value, usrpropkey::median_value,
                                      usrpropkey::generated_by, usrpropkey::storagetype};

}  // namespace

PageGatherer::PageGatherer(RefCntPtr<Column> source, RefCntPtr<Column> output)
    : m_source(std::move(source)), m_output(std::move(output)) {}

PageGatherer::~PageGatherer() = default;

usrprops PageGatherer::PageProperties(const Column& source) {
    usrprops properties = source.GetProperties();
    for (const usrpropkey key : invalidated) properties.erase(key);
    return properties;
}

bool PageGatherer::Fits() const {
    return m_source->GetDict() == m_output->GetDict() && m_source->GetTokenSize() == m_output->GetTokenSize();
}

void PageGatherer::Adopt() {
    if (m_output->GetTokenSize() != m_source->GetTokenSize()) {
        m_output->SetProperty(usrpropkey::storagewidth, std::to_wstring(m_source->GetTokenSize()));
        m_output->SetData(nullptr);
    }
    if (m_source->GetDict() != m_output->GetDict()) m_output->SetDict(m_source->GetDict());
    m_fetch = map_fetch_ulng_col_type_col(m_output->GetTokenSize());
    if (m_output->GetData()) m_output->Seek(0, 0);
}

void PageGatherer::Overlay(unsigned at, unsigned first, unsigned count, const unsigned* selection) {
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

void PageGatherer::Fetch(unsigned count, output_column out, const unsigned* rows, input_column in) const {
    m_fetch(count, out, input_column{rows, nullptr, sizeof(unsigned), count, column_flags::not_null}, in, nullptr);
}

}  // namespace qve
