#include "system/QuilICUStringSearch.h"

#include <unicode/usearch.h>

#include "system/QuilICUCollator.h"

namespace qve::QuilICU {

std::unique_ptr<StringSearch> StringSearch::Open(const Collator& collator, std::u16string_view pattern,
                                                 std::u16string_view text) {
    UErrorCode error = U_ZERO_ERROR;
    UStringSearch* search =
        usearch_openFromCollator(pattern.data(), static_cast<int32_t>(pattern.size()), text.data(),
                                 static_cast<int32_t>(text.size()), collator.handle(), nullptr, &error);
    if (U_FAILURE(error)) return nullptr;
    return std::unique_ptr<StringSearch>(new StringSearch(search));
}

StringSearch::~StringSearch() {
    usearch_close(m_search);
}

std::optional<Match> StringSearch::At(int position) const {
    if (position == USEARCH_DONE) return std::nullopt;
    const auto begin = static_cast<size_t>(position);
    return Match{begin, begin + static_cast<size_t>(usearch_getMatchedLength(m_search))};
}

std::optional<Match> StringSearch::First() {
    UErrorCode error = U_ZERO_ERROR;
    return At(usearch_first(m_search, &error));
}
std::optional<Match> StringSearch::Last() {
    UErrorCode error = U_ZERO_ERROR;
    return At(usearch_last(m_search, &error));
}
std::optional<Match> StringSearch::Next() {
    UErrorCode error = U_ZERO_ERROR;
    return At(usearch_next(m_search, &error));
}
std::optional<Match> StringSearch::Previous() {
    UErrorCode error = U_ZERO_ERROR;
    return At(usearch_previous(m_search, &error));
}
std::optional<Match> StringSearch::Following(size_t place) {
    UErrorCode error = U_ZERO_ERROR;
    return At(usearch_following(m_search, static_cast<int32_t>(place), &error));
}

}  // namespace qve::QuilICU
