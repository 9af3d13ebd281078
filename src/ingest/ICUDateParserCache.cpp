#include "ingest/ICUDateParserCache.h"

#include <algorithm>
#include <map>
#include <mutex>
#include <utility>

#include "system/unicode.h"

namespace qve {
namespace {

// Locales and patterns come with statements, so there may be any number of them.
constexpr size_t most_entries = 1024;

/// What was made for a key, once for all threads.
template <class Key, class Value>
class SharedMap {
public:
    template <class Make>
    std::shared_ptr<const Value> GetOrAdd(const Key& key, Make make) {
        {
            std::lock_guard lock(m_mutex);
            const auto known = m_map.find(key);
            if (known != m_map.end()) return known->second;
        }
        std::shared_ptr<const Value> made = make();
        std::lock_guard lock(m_mutex);
        if (m_map.size() >= most_entries) m_map.clear();
        return m_map.emplace(key, std::move(made)).first->second;
    }

private:
    std::mutex m_mutex;
    std::map<Key, std::shared_ptr<const Value>> m_map;
};

std::vector<std::u16string> WithoutZones(std::vector<std::u16string> patterns) {
    std::erase_if(patterns, [](const std::u16string& pattern) {
        return PatternLetters(pattern).find_first_of(u"zZOvVXx") != std::u16string::npos;
    });
    return patterns;
}

std::wstring DateOrder(const std::vector<std::u16string>& patterns) {
    constexpr size_t parts = 3;
    std::wstring order;
    for (const char16_t c : patterns.empty() ? std::u16string() : PatternLetters(patterns.front())) {
        const wchar_t part = c == u'y' ? L'y' : c == u'M' ? L'm' : c == u'd' ? L'd' : L'\0';
        if (part && order.find(part) == std::wstring::npos) order += part;
    }
    return order.size() == parts ? order : L"ymd";
}

}  // namespace

std::u16string PatternLetters(std::u16string_view pattern) {
    std::u16string letters;
    bool literal = false;
    for (const char16_t c : pattern) {
        if (c == u'\'') literal = !literal;
        if (!literal && ((c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z'))) letters += c;
    }
    return letters;
}

std::u16string PlainBlanks(std::u16string_view text) {
    constexpr std::u16string_view blanks = u"\u00A0\u202F\u2009";
    constexpr std::u16string_view marks = u"\u200E\u200F\u061C";
    std::u16string plain;
    plain.reserve(text.size());
    for (const char16_t c : text) {
        if (marks.find(c) == std::u16string_view::npos) plain += blanks.find(c) == std::u16string_view::npos ? c : u' ';
    }
    return plain;
}

std::shared_ptr<const ICUDateParserCache::LocaleEntry> ICUDateParserCache::TryGetOrAddLocaleEntry(
    const std::string& locale) {
    static SharedMap<std::string, LocaleEntry> s_locales;
    return s_locales.GetOrAdd(locale, [&locale] {
        auto entry = std::make_shared<LocaleEntry>();
        const std::string gregorian = locale + "@calendar=gregorian";
        entry->dates = QuilICU::DateFormat::DatePatterns(gregorian.c_str());
        entry->datetimes = WithoutZones(QuilICU::DateFormat::DateTimePatterns(gregorian.c_str()));
        entry->order = DateOrder(entry->dates);
        return entry;
    });
}

std::shared_ptr<const QuilICU::DateFormat> ICUDateParserCache::TryGetSimpleDateFormatWithCaching(
    const std::string& locale, std::u16string_view pattern) {
    static SharedMap<std::pair<std::string, std::u16string>, QuilICU::DateFormat> s_formats;
    const std::u16string plain = PlainBlanks(pattern);
    return s_formats.GetOrAdd({locale, plain}, [&]() -> std::shared_ptr<const QuilICU::DateFormat> {
        return QuilICU::DateFormat::Open((locale + "@calendar=gregorian").c_str(), plain);
    });
}

}  // namespace qve
