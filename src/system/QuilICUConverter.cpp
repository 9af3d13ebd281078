#include "system/QuilICUConverter.h"

#include <unicode/ucnv.h>

namespace qve::QuilICU {

std::unique_ptr<Converter> Converter::Open(const char* charset) {
    UErrorCode error = U_ZERO_ERROR;
    UConverter* source = ucnv_open(charset, &error);
    if (U_FAILURE(error)) return nullptr;
    UConverter* target = ucnv_open("UTF-8", &error);
    if (U_FAILURE(error)) {
        ucnv_close(source);
        return nullptr;
    }
    return std::unique_ptr<Converter>(new Converter(source, target));
}

Converter::Converter(UConverter* source, UConverter* target)
    : m_source(source), m_target(target), m_pivot(pivot_size, u'\0') {
    m_pivotSource = m_pivotTarget = m_pivot.data();
}

Converter::~Converter() {
    ucnv_close(m_source);
    ucnv_close(m_target);
}

bool Converter::Append(std::string& utf8, std::string_view block, bool last) {
    const char* source = block.data();
    const char* const sourceEnd = source + block.size();
    for (;;) {
        const size_t written = utf8.size();
        utf8.resize(written + block.size() + block.size() / 2 + 64);
        char* target = utf8.data() + written;
        UErrorCode error = U_ZERO_ERROR;
        ucnv_convertEx(m_target, m_source, &target, utf8.data() + utf8.size(), &source, sourceEnd, m_pivot.data(),
                       &m_pivotSource, &m_pivotTarget, m_pivot.data() + m_pivot.size(), false, last, &error);
        utf8.resize(static_cast<size_t>(target - utf8.data()));
        if (error == U_BUFFER_OVERFLOW_ERROR) continue;
        return U_SUCCESS(error);
    }
}

void Converter::Reset() {
    ucnv_reset(m_source);
    ucnv_reset(m_target);
    m_pivotSource = m_pivotTarget = m_pivot.data();
}

}  // namespace qve::QuilICU
