#include "ingest/TextProperties.h"

#include <charconv>
#include <optional>

#include "system/unicode.h"

namespace qve {
namespace {

struct CharacterKey {
    usrpropkey key;
    char parse_config::*member;
};

constexpr CharacterKey characterKeys[] = {
    {usrpropkey::record_delimiter, &parse_config::record_delimiter},
    {usrpropkey::field_delimiter, &parse_config::field_delimiter},
    {usrpropkey::space_char, &parse_config::space},
    {usrpropkey::plus_char, &parse_config::plus},
    {usrpropkey::minus_char, &parse_config::minus},
    {usrpropkey::decimal_char, &parse_config::decimal},
    {usrpropkey::thousands_char, &parse_config::thousands},
    {usrpropkey::exponent_char, &parse_config::exponent},
    {usrpropkey::percent_char, &parse_config::percent},
    {usrpropkey::date_char, &parse_config::date_separator},
    {usrpropkey::time_char, &parse_config::time_separator},
    {usrpropkey::datetime_char, &parse_config::datetime_separator},
    {usrpropkey::quote_char, &parse_config::double_quote},
    {usrpropkey::single_char, &parse_config::single_quote},
    {usrpropkey::escape_char, &parse_config::escape},
    {usrpropkey::debit_open_char, &parse_config::debit_open},
    {usrpropkey::debit_close_char, &parse_config::debit_close},
};

std::optional<char> Character(const std::wstring& text) {
    if (text.empty()) return '\0';
    if (text[0] == L'\\' && text.size() > 1) {
        const size_t place = parse_config::unescaped.find(static_cast<char>(text[1] & 0x7F));
        if (text[1] > 126 || place == std::string_view::npos) return std::nullopt;
        return parse_config::escaped[place];
    }
    if (text[0] >= 127) return std::nullopt;
    return static_cast<char>(text[0]);
}

void SetText(std::string& target, const usrprops& properties, usrpropkey key) {
    if (const std::wstring* text = properties.get(key)) target = narrow(*text);
}

}  // namespace

void GetConfigFromTextProps(parse_config& config, const usrprops& properties) {
    for (const auto& [key, member] : characterKeys) {
        const std::wstring* text = properties.get(key);
        if (!text) continue;
        if (const auto value = Character(*text)) config.*member = *value;
    }
    SetText(config.true_text, properties, usrpropkey::yes);
    SetText(config.false_text, properties, usrpropkey::no);
    SetText(config.date_alternates, properties, usrpropkey::date_alternates);
    SetText(config.currency, properties, usrpropkey::currency);
    if (const std::wstring* pivot = properties.get(usrpropkey::yy)) {
        const std::string digits = narrow(*pivot);
        std::from_chars(digits.data(), digits.data() + digits.size(), config.two_digit_year);
    }
    const std::wstring* order = properties.get(usrpropkey::date_order);
    if (order && order->size() == 3 && order->find(L'y') != std::wstring::npos &&
        order->find(L'm') != std::wstring::npos && order->find(L'd') != std::wstring::npos) {
        for (size_t i = 0; i < 3; ++i) config.date_order[i] = static_cast<parse_config::date_part>((*order)[i]);
    }
}

void SetTextPropFromConfig(usrprops& properties, usrpropkey key, char value) {
    if (static_cast<unsigned char>(value) >= 127) {
        properties.erase(key);
        return;
    }
    const size_t place = parse_config::escaped.find(value);
    std::wstring text;
    if (place != std::string_view::npos && value != '\'') {
        text = {L'\\', static_cast<wchar_t>(parse_config::unescaped[place])};
    } else {
        text = {static_cast<wchar_t>(value)};
    }
    if (value == '\0') text.clear();
    properties.set(key, text);
}

std::wstring date_order(const parse_config& config) {
    return std::wstring(config.date_order.begin(), config.date_order.end());
}

}  // namespace qve
