#include "primitives/regexp.h"

#include <algorithm>

#include "system/UnicodeUnits.h"
#include "types/text_argument.h"
#include "types/usrtype.h"

namespace qve {
namespace {

// Patterns come as constants, and a query has few of them.
constexpr size_t most_compiled = 16;

std::u16string_view utf16(const usratom& text, std::u16string& buffer) {
    return Unicode::ToUTF16(text.bytes(), static_cast<unsigned>(text.type()->scale()), buffer);
}

bool is_digit(char16_t unit) {
    return unit >= u'0' && unit <= u'9';
}

}  // namespace

regexp::regexp() = default;
regexp::~regexp() = default;

regexp& regexp::local() {
    thread_local regexp own;
    return own;
}

QuilICU::RegularExpression* regexp::applied(const usratom& text, const usratom& pattern) {
    const std::u16string_view units = utf16(pattern, m_buffers[0]);
    const auto found = std::find_if(m_compiled.rbegin(), m_compiled.rend(),
                                    [units](const compiled& known) { return known.pattern == units; });
    if (found != m_compiled.rend()) {
        std::rotate(found.base() - 1, found.base(), m_compiled.end());
    } else {
        if (m_compiled.size() == most_compiled) m_compiled.erase(m_compiled.begin());
        m_compiled.push_back({std::u16string(units), QuilICU::RegularExpression::Open(units)});
    }
    QuilICU::RegularExpression* expression = m_compiled.back().expression.get();
    m_text = utf16(text, m_buffers[1]);
    return expression && expression->SetText(m_text) ? expression : nullptr;
}

std::optional<bool> regexp::contains(const usratom& text, const usratom& pattern) {
    QuilICU::RegularExpression* expression = applied(text, pattern);
    if (!expression) return std::nullopt;
    const bool found = expression->Find().has_value();
    if (expression->GaveUp()) return std::nullopt;
    return found;
}

std::optional<std::u16string_view> regexp::extract(const usratom& text, const usratom& pattern, long long group) {
    QuilICU::RegularExpression* expression = applied(text, pattern);
    if (!expression || group < 0 || group > expression->GroupCount() || !expression->Find()) return std::nullopt;
    const auto match = expression->Group(static_cast<int>(group));
    if (!match) return std::nullopt;
    return m_text.substr(match->begin, match->end - match->begin);
}

bool regexp::setreplace(const usratom& replacement, int groups) {
    m_pieces.clear();
    const std::u16string_view units = utf16(replacement, m_buffers[2]);
    size_t begin = 0;
    size_t i = 0;
    const auto close = [&](size_t end) {
        if (end > begin) m_pieces.push_back({-1, units.substr(begin, end - begin)});
    };
    while (i < units.size()) {
        if (units[i] == u'\\') {
            if (i + 1 == units.size()) return false;
            close(i);
            begin = i + 1;
            i += 2;
        } else if (units[i] == u'$') {
            close(i);
            if (++i == units.size() || !is_digit(units[i])) return false;
            int group = units[i] - u'0';
            if (group > groups) return false;
            // Further digits belong to the number as long as there is such a group.
            for (++i; i < units.size() && is_digit(units[i]); ++i) {
                const int longer = 10 * group + (units[i] - u'0');
                if (longer > groups) break;
                group = longer;
            }
            m_pieces.push_back({group, {}});
            begin = i;
        } else {
            ++i;
        }
    }
    close(units.size());
    return true;
}

std::optional<std::u16string_view> regexp::replace(const usratom& text, const usratom& pattern,
                                                   const usratom& replacement) {
    QuilICU::RegularExpression* expression = applied(text, pattern);
    if (!expression || !setreplace(replacement, expression->GroupCount())) return std::nullopt;
    m_result.clear();
    size_t done = 0;
    while (const auto match = expression->Find()) {
        m_result.append(m_text, done, match->begin - done);
        done = match->end;
        for (const piece& part : m_pieces) {
            if (part.group < 0) {
                m_result.append(part.units);
            } else if (const auto group = expression->Group(part.group)) {
                m_result.append(m_text, group->begin, group->end - group->begin);
            }
            if (m_result.size() * sizeof(char16_t) > longest_text) return std::nullopt;
        }
    }
    if (expression->GaveUp()) return std::nullopt;
    m_result.append(m_text, done);
    return m_result;
}

}  // namespace qve
