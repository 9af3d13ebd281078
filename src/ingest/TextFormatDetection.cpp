#include "ingest/TextFormatDetection.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <tuple>
#include <vector>

#include "ingest/FieldSplitter.h"
#include "ingest/TextProperties.h"
#include "ingest/status.h"
#include "system/QuillonException.h"

namespace qve {
namespace {

constexpr std::string_view listed_separators = ",:;|\t";

bool IsQuote(const parse_config& config, char c) {
    return c != 0 && (c == config.double_quote || c == config.single_quote);
}

// The text between quotes that stand at the start of a word is skipped, whatever the separator will be.
class UnquotedBytes {
public:
    UnquotedBytes(std::string_view text, const parse_config& config) : m_text(text), m_config(config) {}

    // Calls sink(byte) for each byte outside quotes.
    template <class Sink>
    void ForEach(Sink sink) {
        for (size_t i = 0; i < m_text.size(); ++i) {
            const char c = m_text[i];
            const size_t close = IsQuote(m_config, c) && OpensAt(i) ? Close(i) : std::string_view::npos;
            if (close == std::string_view::npos) {
                sink(c);
            } else {
                i = close;
            }
        }
    }

private:
    bool OpensAt(size_t i) const {
        if (i == 0) return true;
        const char before = m_text[i - 1];
        return !IsWord(before) && before != '.' && before != ')';
    }
    static bool IsWord(char c) {
        return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c & 0x80);
    }
    size_t Close(size_t open) const {
        const char q = m_text[open];
        for (size_t i = open + 1; i < m_text.size(); ++i) {
            if (m_config.escape && m_text[i] == m_config.escape) {
                ++i;
            } else if (q == m_config.single_quote && m_text[i] == m_config.record_delimiter) {
                break;  // an apostrophe
            } else if (m_text[i] == q) {
                if (i + 1 < m_text.size() && m_text[i + 1] == q) {
                    ++i;
                } else {
                    return i;
                }
            }
        }
        return std::string_view::npos;
    }

    std::string_view m_text;
    const parse_config& m_config;
};

// How often the quoted fields of a sample end as they should: right before a delimiter.
struct QuoteCounts {
    unsigned closed = 0;
    unsigned broken = 0;
};

QuoteCounts CountQuoted(std::string_view sample, const parse_config& config, char quote) {
    QuoteCounts counts;
    bool atStart = true;
    const auto ends = [&](size_t i) {
        return i >= sample.size() || sample[i] == config.field_delimiter || sample[i] == config.record_delimiter ||
               sample[i] == '\r';
    };
    for (size_t i = 0; i < sample.size(); ++i) {
        if (atStart && sample[i] == quote) {
            size_t close = i + 1;
            for (; close < sample.size(); ++close) {
                if (config.escape && sample[close] == config.escape) {
                    ++close;
                } else if (sample[close] == quote) {
                    if (close + 1 < sample.size() && sample[close + 1] == quote) {
                        ++close;
                    } else {
                        break;
                    }
                }
            }
            const bool cut = close >= sample.size();  // the sample may end inside a field
            if (cut) return i == 0 ? QuoteCounts{0, 1} : counts;
            if (ends(close + 1)) {
                ++counts.closed;
                i = close;
            } else {
                ++counts.broken;
            }
        }
        atStart = i < sample.size() && (sample[i] == config.field_delimiter || sample[i] == config.record_delimiter);
    }
    return counts;
}

}  // namespace

void DetermineRecordSeparator(std::string_view sample, const usrprops& given, parse_config& config, usrprops& found) {
    if (given.has(usrpropkey::record_delimiter)) return;
    uint64_t feeds = 0;
    uint64_t returns = 0;
    UnquotedBytes(sample, config).ForEach([&](char c) {
        feeds += c == '\n';
        returns += c == '\r';
    });
    if (feeds == 0 && returns == 0) {  // quotes may have hidden them
        feeds = static_cast<uint64_t>(std::count(sample.begin(), sample.end(), '\n'));
        returns = static_cast<uint64_t>(std::count(sample.begin(), sample.end(), '\r'));
    }
    if (feeds == 0 && returns == 0) throw QVE_LogicError(status::TextScan_NoLines, "Text file has no lines");
    const char delimiter = 4 * returns > 5 * feeds ? '\r' : '\n';
    if (delimiter == config.record_delimiter) return;
    config.record_delimiter = delimiter;
    SetTextPropFromConfig(found, usrpropkey::record_delimiter, delimiter);
}

void DetermineFieldSeparator(std::string_view sample, const usrprops& given, parse_config& config, usrprops& found) {
    if (given.has(usrpropkey::field_delimiter)) return;
    struct Counter {
        uint64_t inRecord = 0;
        uint64_t total = 0;
        uint64_t squares = 0;
        uint64_t inFirst = 0;
    };
    std::array<Counter, 256> counters;
    uint64_t records = 0;
    const auto endRecord = [&] {
        for (Counter& counter : counters) {
            counter.total += counter.inRecord;
            counter.squares += counter.inRecord * counter.inRecord;
            if (records == 0) counter.inFirst = counter.inRecord;
            counter.inRecord = 0;
        }
        ++records;
    };
    bool pending = false;
    UnquotedBytes(sample, config).ForEach([&](char c) {
        pending = c != config.record_delimiter;
        if (pending) {
            ++counters[static_cast<unsigned char>(c)].inRecord;
        } else {
            endRecord();
        }
    });
    if (pending && records == 0) endRecord();
    if (records == 0) return;

    std::vector<char> excluded = {config.record_delimiter,
                                  '\r',
                                  config.space,
                                  config.double_quote,
                                  config.single_quote,
                                  config.escape,
                                  config.decimal,
                                  config.plus,
                                  config.minus,
                                  config.date_separator,
                                  config.time_separator,
                                  config.debit_open,
                                  config.debit_close};
    if (config.currency.size() == 1) excluded.push_back(config.currency[0]);
    using Score = std::tuple<double, size_t, int64_t, int>;
    std::vector<Score> scores;
    for (int byte = 1; byte < 127; ++byte) {  // what a property can hold
        const char c = static_cast<char>(byte);
        const Counter& counter = counters[static_cast<size_t>(byte)];
        const size_t place = listed_separators.find(c);
        const bool listed = place != std::string_view::npos;
        if (std::find(excluded.begin(), excluded.end(), c) != excluded.end()) continue;
        if (counter.total == 0) continue;
        if (counter.total * 10 < records * 8 && counter.total + 2 < records) continue;
        const bool isWord = (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c < 32;
        if (!listed && (isWord || counter.inFirst == 0)) continue;
        const double mean = static_cast<double>(counter.total) / static_cast<double>(records);
        const double variance = static_cast<double>(counter.squares) / static_cast<double>(records) - mean * mean;
        scores.emplace_back(variance < 1e-9 ? 0 : variance, listed ? place : 5, -static_cast<int64_t>(counter.total),
                            byte);
    }
    if (scores.empty()) return;
    const char delimiter = static_cast<char>(std::get<3>(*std::min_element(scores.begin(), scores.end())));
    if (delimiter == config.field_delimiter) return;
    config.field_delimiter = delimiter;
    SetTextPropFromConfig(found, usrpropkey::field_delimiter, delimiter);
}

void ValidateQuotes(std::string_view sample, const usrprops& given, parse_config& config, usrprops& found) {
    const auto clear = [&](char& character, usrpropkey key) {
        character = 0;
        SetTextPropFromConfig(found, key, 0);
        // Found with the character, the delimiters might not be found again without it.
        SetTextPropFromConfig(found, usrpropkey::record_delimiter, config.record_delimiter);
        SetTextPropFromConfig(found, usrpropkey::field_delimiter, config.field_delimiter);
    };
    const auto encloses = [&](char quote) {
        const QuoteCounts counts = CountQuoted(sample, config, quote);
        return counts.broken == 0;
    };
    if (config.escape && !given.has(usrpropkey::escape_char) && config.double_quote) {
        // A backslash before a closing quote is part of a path, if that makes the quotes come out even.
        parse_config without = config;
        without.escape = 0;
        const QuoteCounts with = CountQuoted(sample, config, config.double_quote);
        const QuoteCounts plain = CountQuoted(sample, without, config.double_quote);
        if (plain.closed > with.closed && plain.broken <= with.broken) clear(config.escape, usrpropkey::escape_char);
    }
    if (config.single_quote && !given.has(usrpropkey::single_char)) {
        const QuoteCounts counts = CountQuoted(sample, config, config.single_quote);
        if (counts.closed == 0 || counts.broken > 0) clear(config.single_quote, usrpropkey::single_char);
    }
    if (config.double_quote && !given.has(usrpropkey::quote_char) && !encloses(config.double_quote)) {
        clear(config.double_quote, usrpropkey::quote_char);
    }
}

}  // namespace qve
