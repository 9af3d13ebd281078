#pragma once

#include <memory>
#include <optional>
#include <string_view>

struct UStringSearch;

namespace qve::QuilICU {

class Collator;

/// Where matches of a pattern lie in a text, in UTF-16 units.
struct Match {
    size_t begin;
    size_t end;
};

/// Finds a pattern in a text by a collator's rules. The pattern, the text and the collator must live as long as this.
/// Neither string may be empty. One thread at a time.
class StringSearch {
public:
    /// Null when ICU refuses.
    static std::unique_ptr<StringSearch> Open(const Collator& collator, std::u16string_view pattern,
                                              std::u16string_view text);
    ~StringSearch();
    StringSearch(const StringSearch&) = delete;
    StringSearch& operator=(const StringSearch&) = delete;

    /// The first match, the last one, and those after and before the one found before.
    std::optional<Match> First();
    std::optional<Match> Last();
    std::optional<Match> Next();
    std::optional<Match> Previous();
    /// The first match at or after a place.
    std::optional<Match> Following(size_t place);

private:
    explicit StringSearch(UStringSearch* search) : m_search(search) {}
    std::optional<Match> At(int position) const;
    UStringSearch* m_search;
};

}  // namespace qve::QuilICU
