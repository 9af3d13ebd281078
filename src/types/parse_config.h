#pragma once

#include <array>
#include <string>
#include <string_view>

namespace qve {

/// The text format of delimited files and of values in text. A character of 0 means that there is none.
struct parse_config {
    /// The parts of a date.
    enum date_part : char { year = 'y', month = 'm', day = 'd' };

    char record_delimiter = '\n';
    char field_delimiter = ',';
    char space = ' ';
    std::string true_text = "true";
    std::string false_text = "false";
    char plus = '+';
    char minus = '-';
    char decimal = '.';
    char thousands = ',';
    char exponent = 'e';
    char percent = '%';
    char date_separator = '-';
    char time_separator = ':';
    char datetime_separator = ' ';
    /// Two-digit years up to this are of the years 2000, later ones of the years 1900.
    int two_digit_year = 30;
    /// Further characters that may separate the parts of a date.
    std::string date_alternates;
    char double_quote = '"';
    char single_quote = '\'';
    char escape = '\\';
    std::string currency;
    char debit_open = '(';
    char debit_close = ')';
    std::array<date_part, 3> date_order{year, month, day};

    /// The characters of escape pairs, as "\n": the letter at some place of `unescaped` stands for the character at
    /// that place of `escaped`.
    static constexpr std::string_view unescaped{"0abtnvfr'\\"};
    static constexpr std::string_view escaped{"\0\a\b\t\n\v\f\r'\\", 10};

    /// The default format, shared.
    static const parse_config& standard();
};

}  // namespace qve
