#include "system/QuilICUCharsetDetector.h"

#include <unicode/ucsdet.h>

namespace qve::QuilICU {

std::unique_ptr<CharsetDetector> CharsetDetector::Open() {
    UErrorCode error = U_ZERO_ERROR;
    UCharsetDetector* detector = ucsdet_open(&error);
    if (U_FAILURE(error)) return nullptr;
    return std::unique_ptr<CharsetDetector>(new CharsetDetector(detector));
}

CharsetDetector::~CharsetDetector() {
    ucsdet_close(m_detector);
}

bool CharsetDetector::SetText(std::string_view text) {
    UErrorCode error = U_ZERO_ERROR;
    m_match = nullptr;
    ucsdet_setText(m_detector, text.data(), static_cast<int32_t>(text.size()), &error);
    return U_SUCCESS(error);
}

bool CharsetDetector::Detect() {
    UErrorCode error = U_ZERO_ERROR;
    m_match = ucsdet_detect(m_detector, &error);
    return U_SUCCESS(error) && m_match;
}

std::optional<std::string> CharsetDetector::GetName() const {
    if (!m_match) return std::nullopt;
    UErrorCode error = U_ZERO_ERROR;
    const char* name = ucsdet_getName(m_match, &error);
    if (U_FAILURE(error) || !name) return std::nullopt;
    return name;
}

std::optional<int> CharsetDetector::GetConfidence() const {
    if (!m_match) return std::nullopt;
    UErrorCode error = U_ZERO_ERROR;
    const int confidence = ucsdet_getConfidence(m_match, &error);
    if (U_FAILURE(error)) return std::nullopt;
    return confidence;
}

}  // namespace qve::QuilICU
