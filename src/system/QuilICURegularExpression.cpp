#include "system/QuilICURegularExpression.h"

#include <unicode/uregex.h>

namespace qve::QuilICU {

// What may be spent on one text: units of ten thousand steps back, of some tenths of a millisecond each, and bytes.
constexpr int32_t time_limit = 100;
constexpr int32_t stack_limit = 4 << 20;

std::unique_ptr<RegularExpression> RegularExpression::Open(std::u16string_view pattern) {
    if (pattern.empty()) pattern = u"(?:)";  // which means the same, and is a pattern to ICU
    UErrorCode error = U_ZERO_ERROR;
    URegularExpression* expression =
        uregex_open(pattern.data(), static_cast<int32_t>(pattern.size()), 0, nullptr, &error);
    if (U_FAILURE(error)) return nullptr;
    uregex_setTimeLimit(expression, time_limit, &error);
    uregex_setStackLimit(expression, stack_limit, &error);
    return std::unique_ptr<RegularExpression>(new RegularExpression(expression));
}

RegularExpression::~RegularExpression() {
    uregex_close(m_expression);
}

bool RegularExpression::SetText(std::u16string_view text) {
    UErrorCode error = U_ZERO_ERROR;
    m_gaveUp = false;
    // A view of nothing has no address, which ICU refuses.
    const char16_t* data = text.data() ? text.data() : u"";
    uregex_setText(m_expression, data, static_cast<int32_t>(text.size()), &error);
    return U_SUCCESS(error);
}

std::optional<Match> RegularExpression::Find() {
    UErrorCode error = U_ZERO_ERROR;
    const bool found = uregex_findNext(m_expression, &error);
    if (U_FAILURE(error)) m_gaveUp = true;
    return found && !m_gaveUp ? Group(0) : std::nullopt;
}

int RegularExpression::GroupCount() const {
    UErrorCode error = U_ZERO_ERROR;
    return uregex_groupCount(m_expression, &error);
}

std::optional<Match> RegularExpression::Group(int group) const {
    UErrorCode error = U_ZERO_ERROR;
    const int32_t begin = uregex_start(m_expression, group, &error);
    const int32_t end = uregex_end(m_expression, group, &error);
    if (U_FAILURE(error) || begin < 0) return std::nullopt;
    return Match{static_cast<size_t>(begin), static_cast<size_t>(end)};
}

}  // namespace qve::QuilICU
