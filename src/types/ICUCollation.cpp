#include "types/ICUCollation.h"

#include <algorithm>
#include <atomic>

#include "system/QuillonException.h"
#include "types/ICUCollator.h"
#include "types/status.h"

namespace qve {
namespace {

// The collators of this thread by slot of their collation; they go with the thread.
std::vector<std::unique_ptr<ICUCollation::Collator>>& thread_collators() {
    thread_local std::vector<std::unique_ptr<ICUCollation::Collator>> collators;
    return collators;
}

std::atomic<size_t> next_slot{0};

}  // namespace

bool ICUCollation::s_OptimizeICU = false;

ICUCollation::ICUCollation(std::wstring name, std::string locale, unsigned attributes)
    : collation(std::move(name)),
      m_locale(std::move(locale)),
      m_attributes(static_cast<Attributes>(attributes)),
      m_slot(next_slot++) {
    if (attributes == 2 || attributes > 4) {
        throw QVE_RangeError(status::ICUCollation_attributes, "invalid collation attributes");
    }
}

ICUCollation::~ICUCollation() = default;

const std::vector<ICUCollation::Builtin_row>& ICUCollation::GetBuiltins() {
    static const std::vector<Builtin_row> rows = {
        {L"ar", "ar", defaultStrength},
        {L"cs", "cs", defaultStrength},
        {L"cs_CI", "cs", caseInsensitive},
        {L"cs_CI_AI", "cs", caseAccentInsensitive},
        {L"da", "da", defaultStrength},
        {L"de", "de", defaultStrength},
        {L"el", "el", defaultStrength},
        {L"en_GB", "en_GB", defaultStrength},
        {L"en_US", "en_US", defaultStrength},
        {L"en_US_CI", "en_US", caseInsensitive},
        {L"es", "es", defaultStrength},
        {L"es_CI_AI", "es", caseAccentInsensitive},
        {L"et", "et", defaultStrength},
        {L"fi", "fi", defaultStrength},
        // Canadian French sorts as French does, without the backward order of accents.
        {L"fr_CA", "fr", defaultStrength},
        {L"fr_FR", "fr_FR", defaultStrength},
        {L"fr_FR_CI_AI", "fr_FR", caseAccentInsensitive},
        {L"he", "he", defaultStrength},
        {L"hu", "hu", defaultStrength},
        {L"is", "is", defaultStrength},
        {L"it", "it", defaultStrength},
        {L"ja", "ja", defaultStrength},
        {L"ja_JIS", "ja", japaneseIndustrial},
        {L"ko", "ko", defaultStrength},
        {L"lt", "lt", defaultStrength},
        {L"lv", "lv", defaultStrength},
        {L"nl_NL", "nl_NL", defaultStrength},
        {L"nn", "nn", defaultStrength},
        {L"pl", "pl", defaultStrength},
        {L"pt_BR", "pt_BR", defaultStrength},
        {L"pt_BR_CI_AI", "pt_BR", caseAccentInsensitive},
        {L"pt_PT", "pt_PT", defaultStrength},
        {L"root", "root", defaultStrength},
        {L"ru", "ru", defaultStrength},
        {L"sl", "sl", defaultStrength},
        {L"sv_FI", "sv_FI", defaultStrength},
        {L"sv_SE", "sv_SE", defaultStrength},
        {L"tr", "tr", defaultStrength},
        {L"uk", "uk", defaultStrength},
        {L"vi", "vi", defaultStrength},
        {L"zh_Hans_CN", "zh_Hans_CN", defaultStrength},
        {L"zh_Hant_TW", "zh_Hant_TW", defaultStrength},
    };
    return rows;
}

std::unique_ptr<collation> ICUCollation::Builtin(std::wstring_view name) {
    const auto& rows = GetBuiltins();
    const auto row = std::find_if(rows.begin(), rows.end(), [name](const auto& r) { return name == r.name; });
    if (row == rows.end()) throw QVE_RangeError(status::ICUCollation_Builtin, "no such collation");
    return std::make_unique<ICUCollation>(row->name, row->locale, row->attribute);
}

ICUCollation::Collator& ICUCollation::local() const {
    auto& collators = thread_collators();
    if (collators.size() <= m_slot) collators.resize(m_slot + 1);
    auto& mine = collators[m_slot];
    if (!mine) mine = std::make_unique<Collator>(m_locale, m_attributes);
    return *mine;
}

const collation* ICUCollation::allocate() const {
    local();
    return this;
}

void ICUCollation::releaseLocal() const {
    auto& collators = thread_collators();
    if (m_slot < collators.size()) collators[m_slot].reset();
}

void ICUCollation::sortkey(std::vector<unsigned char>& key, const usratom& text) const {
    local().sortkey(key, text);
}
unsigned ICUCollation::hash(const usratom& text) const {
    return local().hash(text);
}
int ICUCollation::compare(const usratom& left, const usratom& right) const {
    return local().compare(left, right);
}
bool ICUCollation::startswith(const usratom& text, const usratom& part) const {
    return local().startswith(text, part);
}
bool ICUCollation::endswith(const usratom& text, const usratom& part) const {
    return local().endswith(text, part);
}
int ICUCollation::find(const usratom& text, const usratom& part, int start) const {
    return local().find(text, part, start);
}
int ICUCollation::findNth(const usratom& text, const usratom& part, int n) const {
    return local().findNth(text, part, n);
}
void ICUCollation::split(usratom& result, const usratom& text, const usratom& delimiter, int n) const {
    local().split(result, text, delimiter, n);
}
bool ICUCollation::contains(const usratom& text, const usratom& part) const {
    return local().contains(text, part);
}
bool ICUCollation::compares_ascii_by_byte() const {
    return local().compares_ascii_by_byte();
}
void ICUCollation::replace(usratom& result, const usratom& text, const usratom& from, const usratom& to) const {
    local().replace(result, text, from, to);
}
void ICUCollation::upper(const usratom& text, usratom& result) const {
    local().upper(text, result);
}
void ICUCollation::lower(const usratom& text, usratom& result) const {
    local().lower(text, result);
}

}  // namespace qve
