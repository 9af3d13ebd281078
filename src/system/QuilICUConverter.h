#pragma once

#include <memory>
#include <string>
#include <string_view>

struct UConverter;

namespace qve::QuilICU {

/// Converts bytes of a character set to UTF-8, block by block. What cannot be converted becomes U+FFFD. One thread
/// at a time.
class Converter {
public:
    /// Null when ICU knows no such character set.
    static std::unique_ptr<Converter> Open(const char* charset);
    ~Converter();
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;

    /// Appends to `utf8` what the bytes of the next block give; with `last` also what was held back, as the start of a
    /// broken character. Takes all of `block`. False when ICU fails.
    bool Append(std::string& utf8, std::string_view block, bool last);
    /// Begins a new text.
    void Reset();

private:
    Converter(UConverter* source, UConverter* target);
    UConverter* m_source;
    UConverter* m_target;
    // Between the two converters stands a ring of UTF-16.
    static constexpr size_t pivot_size = 4096;
    std::u16string m_pivot;
    char16_t* m_pivotSource;
    char16_t* m_pivotTarget;
};

}  // namespace qve::QuilICU
