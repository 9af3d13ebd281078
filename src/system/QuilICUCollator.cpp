#include "system/QuilICUCollator.h"

#include <unicode/ucol.h>
#include <unicode/uset.h>

#include <algorithm>
#include <iterator>

namespace qve::QuilICU {

std::unique_ptr<Collator> Collator::Open(const char* locale) {
    UErrorCode error = U_ZERO_ERROR;
    UCollator* collator = ucol_open(locale, &error);
    if (U_FAILURE(error)) return nullptr;
    return std::unique_ptr<Collator>(new Collator(collator));
}

Collator::~Collator() {
    ucol_close(m_collator);
}

bool Collator::SetStrength(Strength strength) {
    if (strength == Strength::locale) return true;
    UErrorCode error = U_ZERO_ERROR;
    ucol_setAttribute(m_collator, UCOL_STRENGTH, strength == Strength::primary ? UCOL_PRIMARY : UCOL_SECONDARY, &error);
    return U_SUCCESS(error);
}

bool Collator::SetCaseLevel() {
    UErrorCode error = U_ZERO_ERROR;
    ucol_setAttribute(m_collator, UCOL_CASE_LEVEL, UCOL_ON, &error);
    return U_SUCCESS(error);
}

bool Collator::TellsAsciiApart() const {
    UErrorCode error = U_ZERO_ERROR;
    const auto is = [&](UColAttribute attribute, UColAttributeValue value) {
        return ucol_getAttribute(m_collator, attribute, &error) == value && U_SUCCESS(error);
    };
    if (!is(UCOL_STRENGTH, UCOL_TERTIARY) || !is(UCOL_ALTERNATE_HANDLING, UCOL_NON_IGNORABLE) ||
        !is(UCOL_NUMERIC_COLLATION, UCOL_OFF)) {
        return false;
    }
    // The root order tells all of them apart; so does a locale that changes nothing about them.
    const std::unique_ptr<USet, void (*)(USet*)> tailored(ucol_getTailoredSet(m_collator, &error), uset_close);
    if (U_FAILURE(error)) return false;
    for (int32_t i = 0; i < uset_getItemCount(tailored.get()); ++i) {
        UChar32 first = 0, last = 0;
        UChar sequence[64];
        error = U_ZERO_ERROR;
        const int32_t length = uset_getItem(tailored.get(), i, &first, &last, sequence, std::size(sequence), &error);
        if (U_FAILURE(error)) return false;
        if (length == 0 && first <= '~' && last >= ' ') return false;
        // A sequence that sorts as one matters when it may occur in such a text.
        if (length > 0 && std::all_of(sequence, sequence + length, [](UChar c) { return c >= ' ' && c <= '~'; })) {
            return false;
        }
    }
    return true;
}

int Collator::Compare(std::u16string_view left, std::u16string_view right) const {
    return ucol_strcoll(m_collator, left.data(), static_cast<int32_t>(left.size()), right.data(),
                        static_cast<int32_t>(right.size()));
}

int Collator::Compare(std::string_view left, std::string_view right) const {
    UErrorCode error = U_ZERO_ERROR;
    return ucol_strcollUTF8(m_collator, left.data(), static_cast<int32_t>(left.size()), right.data(),
                            static_cast<int32_t>(right.size()), &error);
}

size_t Collator::SortKey(std::u16string_view text, std::vector<unsigned char>& key) const {
    const auto length = static_cast<int32_t>(text.size());
    const auto capacity = [&key] { return static_cast<int32_t>(key.size()); };
    int32_t needed = ucol_getSortKey(m_collator, text.data(), length, key.data(), capacity());
    if (needed > capacity()) {
        key.resize(static_cast<size_t>(needed));
        needed = ucol_getSortKey(m_collator, text.data(), length, key.data(), capacity());
    }
    return needed > 0 ? static_cast<size_t>(needed - 1) : 0;
}

}  // namespace qve::QuilICU
