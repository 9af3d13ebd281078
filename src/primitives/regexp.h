#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "system/QuilICURegularExpression.h"
#include "types/usratom.h"

namespace qve {

/// Regular expressions over texts. A pattern is compiled once, and kept as long as few others come between; so an
/// object serves for a whole query. Nothing is returned where there is no answer: for a pattern that is not well
/// formed, a group that it does not have, and a text on which the search was given up. One thread at a time.
class regexp {
public:
    regexp();
    ~regexp();
    /// The object of this thread.
    static regexp& local();

    /// Whether some part of the text matches.
    std::optional<bool> contains(const usratom& text, const usratom& pattern);
    /// A group of the first match, 0 for the whole of it. The view is valid until the next call.
    std::optional<std::u16string_view> extract(const usratom& text, const usratom& pattern, long long group);
    /// The text with every match replaced. In `replacement` "$" and digits stand for a group, which is empty when it
    /// took no part, and "\" makes the next character an ordinary one. Nothing also when the result would pass
    /// longest_text. The view is valid until the next call.
    std::optional<std::u16string_view> replace(const usratom& text, const usratom& pattern, const usratom& replacement);

private:
    struct compiled {
        std::u16string pattern;
        std::unique_ptr<QuilICU::RegularExpression> expression;  // null when the pattern is not well formed
    };
    /// A stretch of the replacement, or a group in place of one.
    struct piece {
        int group;  // -1 for the stretch
        std::u16string_view units;
    };

    /// The expression of the pattern with `text` set; null when there is none.
    QuilICU::RegularExpression* applied(const usratom& text, const usratom& pattern);
    /// Takes a replacement apart. False when it names a group that does not exist or ends within an escape.
    bool setreplace(const usratom& replacement, int groups);

    std::vector<compiled> m_compiled;  // most recently used last
    std::u16string m_buffers[3];
    std::u16string_view m_text;
    std::vector<piece> m_pieces;
    std::u16string m_result;
};

}  // namespace qve
