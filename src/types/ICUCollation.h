#pragma once

#include <memory>
#include <string>
#include <vector>

#include "types/collation.h"

namespace qve {

/// A collation of a locale. Collators are not safe for two threads, so each thread has one of its own, made at first
/// use.
class ICUCollation : public collation {
public:
    enum Attributes : unsigned {
        defaultStrength = 0,
        caseInsensitive = 1,        ///< secondary strength, "_CI"
        caseAccentInsensitive = 3,  ///< primary strength, "_CI_AI"
        japaneseIndustrial = 4,     ///< small and full kana told apart on a level of their own, "_JIS"
    };
    struct Builtin_row {
        const wchar_t* name;
        const char* locale;
        Attributes attribute;
    };

    /// Switches on hashing of "en_US" without sort keys (setting `optimize-icu`). Written at start-up.
    static bool s_OptimizeICU;

    /// Throws QVE_RangeError 40194 for attributes other than the above.
    ICUCollation(std::wstring name, std::string locale, unsigned attributes);
    ~ICUCollation() override;

    /// The table of built-in collations.
    static const std::vector<Builtin_row>& GetBuiltins();
    /// A new collation of the table. Throws QVE_RangeError 40191 for a name not in the table.
    static std::unique_ptr<collation> Builtin(std::wstring_view name);

    /// The name of the ICU locale, as in "en_US".
    const std::string& GetLocale() const { return m_locale; }

    void sortkey(std::vector<unsigned char>& key, const usratom& text) const override;
    unsigned hash(const usratom& text) const override;
    int compare(const usratom& left, const usratom& right) const override;
    bool startswith(const usratom& text, const usratom& part) const override;
    bool endswith(const usratom& text, const usratom& part) const override;
    int find(const usratom& text, const usratom& part, int start) const override;
    int findNth(const usratom& text, const usratom& part, int n) const override;
    void split(usratom& result, const usratom& text, const usratom& delimiter, int n) const override;
    bool contains(const usratom& text, const usratom& part) const override;
    bool compares_ascii_by_byte() const override;
    void replace(usratom& result, const usratom& text, const usratom& from, const usratom& to) const override;
    void upper(const usratom& text, usratom& result) const override;
    void lower(const usratom& text, usratom& result) const override;
    const collation* allocate() const override;
    void releaseLocal() const override;

    class Collator;

private:
    Collator& local() const;

    std::string m_locale;
    Attributes m_attributes;
    // Place of this collation's collator in the table that each thread keeps.
    size_t m_slot;
};

}  // namespace qve
