#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

struct UCharsetDetector;
struct UCharsetMatch;

namespace qve::QuilICU {

/// Guesses the character set of bytes. The steps are apart, so that a caller can tell which one failed.
class CharsetDetector {
public:
    /// Null when ICU refuses.
    static std::unique_ptr<CharsetDetector> Open();
    ~CharsetDetector();
    CharsetDetector(const CharsetDetector&) = delete;
    CharsetDetector& operator=(const CharsetDetector&) = delete;

    /// The text must live as long as this is used. False when ICU refuses.
    bool SetText(std::string_view text);
    /// False when no character set fits.
    bool Detect();
    /// The best guess after Detect, as in "windows-1252"; nothing when ICU fails.
    std::optional<std::string> GetName() const;
    /// From 0 to 100.
    std::optional<int> GetConfidence() const;

private:
    explicit CharsetDetector(UCharsetDetector* detector) : m_detector(detector) {}
    UCharsetDetector* m_detector;
    const UCharsetMatch* m_match = nullptr;
};

}  // namespace qve::QuilICU
