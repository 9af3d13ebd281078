#include "system/QuilICURegularExpression.h"

#include <unicode/uregex.h>

namespace qve::QuilICU {

// Steps of the matching engine, about a millisecond each.
constexpr int32_t time_limit = 2000;
constexpr int32_t stack_limit = 4 << 20;

std::unique_ptr<RegularExpression> RegularExpression::Open(std::u16string_view pattern) {
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
    // A view of nothing has no address, which ICU refuses.
    const char16_t* data = text.data() ? text.data() : u"";
    uregex_setText(m_expression, data, static_cast<int32_t>(text.size()), &error);
    return U_SUCCESS(error);
}

std::optional<Match> RegularExpression::Find() {
    UErrorCode error = U_ZERO_ERROR;
    if (!uregex_findNext(m_expression, &error) || U_FAILURE(error)) return std::nullopt;
    return Group(0);
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

std::optional<std::u16string> RegularExpression::ReplaceAll(std::u16string_view replacement) {
    const char16_t* data = replacement.data() ? replacement.data() : u"";
    std::u16string result(256, u'\0');
    for (int attempt = 0; attempt < 2; ++attempt) {
        UErrorCode error = U_ZERO_ERROR;
        const int32_t needed = uregex_replaceAll(m_expression, data, static_cast<int32_t>(replacement.size()),
                                                 result.data(), static_cast<int32_t>(result.size()), &error);
        if (error != U_BUFFER_OVERFLOW_ERROR && U_FAILURE(error)) return std::nullopt;
        const bool fitted = error != U_BUFFER_OVERFLOW_ERROR;
        result.resize(static_cast<size_t>(needed));
        if (fitted) return result;
    }
    return std::nullopt;
}

}  // namespace qve::QuilICU
