#pragma once

#include <memory>
#include <string_view>
#include <vector>

struct UCollator;

namespace qve::QuilICU {

/// An ICU collator of a locale. One thread at a time.
class Collator {
public:
    enum class Strength { locale, primary, secondary };

    /// Null when ICU refuses the locale.
    static std::unique_ptr<Collator> Open(const char* locale);
    ~Collator();
    Collator(const Collator&) = delete;
    Collator& operator=(const Collator&) = delete;

    /// False when ICU refuses.
    bool SetStrength(Strength strength);
    /// Puts the difference of small and full letters on a level of its own, above the difference of scripts: of kana
    /// the small and full forms are told apart before hiragana and katakana, as the Japanese industrial standard of
    /// collation orders them. False when ICU refuses.
    bool SetCaseLevel();

    /// -1, 0 or 1.
    int Compare(std::u16string_view left, std::u16string_view right) const;
    /// The same for UTF-8.
    int Compare(std::string_view left, std::string_view right) const;
    /// Writes a key whose memcmp order is this order into `key`, which only grows, and returns the key's length without
    /// its ending 0; 0 when ICU fails, as no key is empty.
    size_t SortKey(std::u16string_view text, std::vector<unsigned char>& key) const;

    /// True when two texts of printable ASCII are equal only if they are the same: each such character has a weight
    /// of its own that no other nor any neighbour changes.
    bool TellsAsciiApart() const;

    UCollator* handle() const { return m_collator; }

private:
    explicit Collator(UCollator* collator) : m_collator(collator) {}
    UCollator* m_collator;
};

}  // namespace qve::QuilICU
